#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

class QQuickWindow;
class ZuviAppDelegate;

// Calls back once the first screen's list has content on the screen: the
// recommended grid has received its first page and the window has drawn a
// frame since. Start-up measurements and the screenshot tool wait on it.
class ZuviFirstPageProbe : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void()>;

    ZuviFirstPageProbe(ZuviAppDelegate *delegate, Handler handler, QObject *parent = nullptr);

    bool fired() const { return m_fired; }

private:
    void listChanged();
    void frameShown();

    QPointer<QQuickWindow> m_window;
    Handler m_handler;
    bool m_listHasContent = false;
    bool m_fired = false;
};
