#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>
Q_MOC_INCLUDE("app/zuviviewcontroller.h")

class ZuviScheduler;
class ZuviTabBarController;
class ZuviViewController;

// The navigation stack of one tab. Besides pushing and popping screens it
// owns the left-edge swipe that goes back one screen: the page reports the
// pan's start, velocity and end, and the thresholds are decided here.
class ZuviNavigationController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Navigation stacks are built by the application")
    Q_PROPERTY(int depth READ depth NOTIFY stackChanged)
    Q_PROPERTY(ZuviViewController *topViewController READ topViewController NOTIFY stackChanged)
    Q_PROPERTY(ZuviViewController *rootViewController READ rootViewController CONSTANT)
    Q_PROPERTY(bool navigationBarHidden READ isNavigationBarHidden NOTIFY navigationBarChanged)
    Q_PROPERTY(bool navigationBarAnimated READ navigationBarAnimated NOTIFY navigationBarChanged)
    Q_PROPERTY(bool edgeBackPopInProgress READ edgeBackPopInProgress NOTIFY edgeBackChanged)
    Q_PROPERTY(bool edgeBackGestureEnabled READ edgeBackGestureEnabled NOTIFY edgeBackChanged)

public:
    // The pan may only start this close to the left edge.
    static constexpr double kEdgeWidth = 56;
    // A horizontal pan this long, or this fast, goes back when it ends.
    static constexpr double kPopTranslation = 48;
    static constexpr double kPopVelocity = 240;
    static constexpr double kHorizontalDominance = 0.7;
    static constexpr double kGestureResetDelay = 0.45;

    // Gesture phases as the page reports them.
    enum GestureState { GestureBegan, GestureChanged, GestureEnded, GestureCancelled };
    Q_ENUM(GestureState)

    // Takes ownership of the root screen.
    ZuviNavigationController(ZuviViewController *root, ZuviScheduler *scheduler,
                             QObject *parent = nullptr);
    ~ZuviNavigationController() override;

    int depth() const { return static_cast<int>(m_stack.size()); }
    QList<ZuviViewController *> viewControllers() const;
    ZuviViewController *topViewController() const;
    ZuviViewController *rootViewController() const;

    ZuviTabBarController *tabBarController() const;
    void setTabBarController(ZuviTabBarController *controller);

    // Takes ownership of the screen.
    Q_INVOKABLE void pushViewController(ZuviViewController *controller, bool animated = true);
    Q_INVOKABLE bool popViewController(bool animated = true);

    bool isNavigationBarHidden() const { return m_navigationBarHidden; }
    bool navigationBarAnimated() const { return m_navigationBarAnimated; }
    void setNavigationBarHidden(bool hidden, bool animated);

    bool edgeBackPopInProgress() const { return m_edgeBackPopInProgress; }
    bool edgeBackGestureEnabled() const { return m_edgeBackGestureEnabled; }

    // Whether a touch may feed the edge pan: never one on the navigation bar
    // or on a control (a button, a search field), so those keep working.
    Q_INVOKABLE bool gestureShouldReceiveTouch(bool touchOnBarOrControl) const;
    // Whether a pan that starts at x (in this stack's view) with that
    // velocity becomes the edge-back gesture.
    Q_INVOKABLE bool gestureShouldBegin(double x, double velocityX, double velocityY) const;
    // The pan moved or ended; only its end can go back.
    Q_INVOKABLE void edgeBackPanGestureRecognized(int state, double translationX, double velocityX);
    void finishEdgeBackPopIfNeeded();
    void resetEdgeBackPanGestureRecognizer();

signals:
    void stackChanged();
    // The page mirrors the stack with these.
    void pushed(ZuviViewController *controller, bool animated);
    void popped(ZuviViewController *controller, bool animated);
    void navigationBarChanged();
    void edgeBackChanged();

private:
    void setEdgeBackPopInProgress(bool inProgress);
    void showNavigationBarOnPhone();
    void releaseLater(ZuviViewController *controller);

    QList<QPointer<ZuviViewController>> m_stack;
    ZuviScheduler *m_scheduler;
    QPointer<ZuviTabBarController> m_tabBarController;
    bool m_navigationBarHidden = false;
    bool m_navigationBarAnimated = false;
    bool m_edgeBackPopInProgress = false;
    bool m_edgeBackGestureEnabled = true;
};
