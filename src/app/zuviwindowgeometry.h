#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>

class QWindow;
class ZuviDefaults;

// Remembers where the window was and how big, per idiom, so the next launch
// opens it the same way. Saved when the window closes or goes and when the
// application quits; a remembered place that no screen shows any more
// (a monitor unplugged) keeps only the size.
class ZuviWindowGeometry : public QObject
{
    Q_OBJECT

public:
    struct Placement {
        QRect geometry;
        // False when only the size is known or usable.
        bool hasPosition = false;
        bool maximized = false;
    };

    // The smallest window worth restoring; anything smaller was a mistake.
    static constexpr int kMinimumSide = 240;

    // The key the geometry of the current idiom is stored under.
    static QString defaultsKey();

    // Where a window should open, from the stored text, given the screens'
    // available areas. Without a usable stored value: the fallback size.
    static Placement placement(const QString &stored, const QSize &fallback,
                               const QList<QRect> &screens);
    static QString storedText(const QRect &geometry, bool maximized);

    // Saves the window's geometry under the key from now on.
    ZuviWindowGeometry(QWindow *window, ZuviDefaults *defaults, const QString &key,
                       QObject *parent = nullptr);

    void save();

private:
    void follow();

    QPointer<QWindow> m_window;
    ZuviDefaults *m_defaults;
    QString m_key;
    QRect m_normalGeometry;
    bool m_maximized = false;
};
