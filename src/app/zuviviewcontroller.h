#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>
Q_MOC_INCLUDE("app/zuvinavigationcontroller.h")

class ZuviNavigationController;
class ZuviTabBarController;

// One screen: the C++ controller that owns the screen's state and rules, and
// the QML page (pageUrl) that lays it out. Screens live in the stack of a
// ZuviNavigationController; the stack tells them when they appear and go.
class ZuviViewController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Screens are made by their controllers in C++")
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(QUrl pageUrl READ pageUrl CONSTANT)
    Q_PROPERTY(ZuviNavigationController *navigationController READ navigationController NOTIFY
                   navigationControllerChanged)
    Q_PROPERTY(bool hidesBottomBarWhenPushed READ hidesBottomBarWhenPushed CONSTANT)

public:
    explicit ZuviViewController(const QString &title, QObject *parent = nullptr);

    QString title() const { return m_title; }
    void setTitle(const QString &title);

    // The QML page that shows this screen.
    virtual QUrl pageUrl() const = 0;

    ZuviNavigationController *navigationController() const;
    void setNavigationController(ZuviNavigationController *controller);
    // The tab root the screen's stack belongs to, if any.
    ZuviTabBarController *tabBarController() const;

    // Pushed screens that want the whole height hide the tab bar.
    bool hidesBottomBarWhenPushed() const { return m_hidesBottomBarWhenPushed; }
    void setHidesBottomBarWhenPushed(bool hides) { m_hidesBottomBarWhenPushed = hides; }

    // The screen builds its content once, before it first shows (a list
    // screen starts its first load here).
    void loadViewIfNeeded();
    bool isViewLoaded() const { return m_viewLoaded; }
    virtual void viewWillAppear() {}
    virtual void viewWillDisappear() {}

    // Whether the screen's page has a search field, which answers
    // searchFocusRequested by taking the keyboard focus.
    virtual bool offersSearch() const { return false; }

    // The URL of a page of the QML module, by its file name.
    static QUrl modulePageUrl(const QString &fileName);

protected:
    virtual void viewDidLoad() {}

signals:
    void titleChanged();
    void navigationControllerChanged();
    void searchFocusRequested();

private:
    QString m_title;
    QPointer<ZuviNavigationController> m_navigationController;
    bool m_hidesBottomBarWhenPushed = false;
    bool m_viewLoaded = false;
};
