#pragma once

#include <QColor>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>
Q_MOC_INCLUDE("app/zuvinavigationcontroller.h")

class ZuviNavigationController;

// The four-tab root. Each tab is one navigation stack with a title and a
// normal and a selected icon. Selecting goes through a should-select hook,
// which is how the application learns that the current tab was tapped again.
class ZuviTabBarController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The tab root is built by the application")
    Q_PROPERTY(int count READ count CONSTANT)
    Q_PROPERTY(int selectedIndex READ selectedIndex NOTIFY selectedIndexChanged)
    Q_PROPERTY(ZuviNavigationController *selectedViewController READ selectedViewController NOTIFY
                   selectedIndexChanged)
    Q_PROPERTY(QColor tintColor READ tintColor WRITE setTintColor NOTIFY lookChanged)
    Q_PROPERTY(bool tabBarVisible READ tabBarVisible NOTIFY lookChanged)
    Q_PROPERTY(double tabBarOpacity READ tabBarOpacity NOTIFY lookChanged)
    Q_PROPERTY(bool tabBarTouchable READ tabBarTouchable NOTIFY lookChanged)

public:
    struct TabItem {
        QString title;
        QUrl image;
        QUrl selectedImage;
        int tag = 0;
    };

    // Answers whether the tab may be selected; may act on the way.
    using ShouldSelectHandler = std::function<bool(ZuviNavigationController *)>;

    explicit ZuviTabBarController(QObject *parent = nullptr);

    // Takes ownership of the stack.
    void addTab(ZuviNavigationController *controller, const TabItem &item);
    void setShouldSelectHandler(ShouldSelectHandler handler);

    int count() const { return static_cast<int>(m_tabs.size()); }
    int selectedIndex() const { return m_selectedIndex; }
    ZuviNavigationController *selectedViewController() const;
    Q_INVOKABLE ZuviNavigationController *viewControllerAt(int index) const;
    Q_INVOKABLE QString titleAt(int index) const;
    Q_INVOKABLE QUrl imageAt(int index, bool selected) const;
    Q_INVOKABLE int tagAt(int index) const;

    // A tap on a tab item.
    Q_INVOKABLE void selectTab(int index);

    QColor tintColor() const { return m_tintColor; }
    void setTintColor(const QColor &color);

    // The tab bar as the phone chrome leaves it: this build never hides it.
    bool tabBarVisible() const { return m_tabBarVisible; }
    double tabBarOpacity() const { return m_tabBarOpacity; }
    bool tabBarTouchable() const { return m_tabBarTouchable; }
    void showTabBarFully();

signals:
    void selectedIndexChanged();
    void lookChanged();

private:
    struct Tab {
        ZuviNavigationController *controller = nullptr;
        TabItem item;
    };

    QList<Tab> m_tabs;
    int m_selectedIndex = 0;
    ShouldSelectHandler m_shouldSelect;
    QColor m_tintColor = Qt::black;
    bool m_tabBarVisible = true;
    double m_tabBarOpacity = 1.0;
    bool m_tabBarTouchable = true;
};
