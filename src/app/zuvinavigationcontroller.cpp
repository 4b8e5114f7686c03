#include "zuvinavigationcontroller.h"

#include "platform/zuviidiom.h"
#include "platform/zuvischeduler.h"
#include "zuvitabbarcontroller.h"
#include "zuviviewcontroller.h"

#include <QtMath>

namespace {
const char *const kResetCallName = "resetEdgeBackPanGestureRecognizer";
const char *const kReleaseCallName = "releasePoppedViewController";
// A popped screen outlives its page's pop transition by this much.
constexpr double kReleaseDelay = 1.0;
} // namespace

ZuviNavigationController::ZuviNavigationController(ZuviViewController *root,
                                                   ZuviScheduler *scheduler, QObject *parent)
    : QObject(parent), m_scheduler(scheduler)
{
    if (root) {
        root->setParent(this);
        root->setNavigationController(this);
        m_stack.append(root);
        root->loadViewIfNeeded();
    }
}

ZuviNavigationController::~ZuviNavigationController()
{
    m_scheduler->cancelAll(this);
}

QList<ZuviViewController *> ZuviNavigationController::viewControllers() const
{
    QList<ZuviViewController *> controllers;
    for (const auto &controller : m_stack)
        controllers.append(controller.data());
    return controllers;
}

ZuviViewController *ZuviNavigationController::topViewController() const
{
    return m_stack.isEmpty() ? nullptr : m_stack.last().data();
}

ZuviViewController *ZuviNavigationController::rootViewController() const
{
    return m_stack.isEmpty() ? nullptr : m_stack.first().data();
}

ZuviTabBarController *ZuviNavigationController::tabBarController() const
{
    return m_tabBarController.data();
}

void ZuviNavigationController::setTabBarController(ZuviTabBarController *controller)
{
    m_tabBarController = controller;
}

void ZuviNavigationController::pushViewController(ZuviViewController *controller, bool animated)
{
    if (!controller)
        return;
    showNavigationBarOnPhone();
    setEdgeBackPopInProgress(false);
    if (ZuviViewController *top = topViewController())
        top->viewWillDisappear();
    controller->setParent(this);
    controller->setNavigationController(this);
    m_stack.append(controller);
    controller->loadViewIfNeeded();
    controller->viewWillAppear();
    emit pushed(controller, animated);
    emit stackChanged();
}

bool ZuviNavigationController::popViewController(bool animated)
{
    if (m_stack.size() < 2)
        return false;
    showNavigationBarOnPhone();
    ZuviViewController *leaving = m_stack.takeLast().data();
    if (leaving)
        leaving->viewWillDisappear();
    if (ZuviViewController *top = topViewController())
        top->viewWillAppear();
    emit popped(leaving, animated);
    emit stackChanged();
    setEdgeBackPopInProgress(false);
    releaseLater(leaving);
    return true;
}

void ZuviNavigationController::setNavigationBarHidden(bool hidden, bool animated)
{
    if (m_navigationBarHidden == hidden)
        return;
    m_navigationBarHidden = hidden;
    m_navigationBarAnimated = animated;
    emit navigationBarChanged();
}

bool ZuviNavigationController::gestureShouldReceiveTouch(bool touchOnBarOrControl) const
{
    return !touchOnBarOrControl;
}

bool ZuviNavigationController::gestureShouldBegin(double x, double velocityX,
                                                  double velocityY) const
{
    if (m_stack.size() < 2 || m_edgeBackPopInProgress || !m_edgeBackGestureEnabled)
        return false;
    if (x > kEdgeWidth || velocityX <= 0)
        return false;
    return qAbs(velocityX) > kHorizontalDominance * qAbs(velocityY);
}

void ZuviNavigationController::edgeBackPanGestureRecognized(int state, double translationX,
                                                            double velocityX)
{
    if (m_stack.size() < 2 || m_edgeBackPopInProgress || state != GestureEnded)
        return;
    if (translationX >= kPopTranslation || velocityX >= kPopVelocity)
        finishEdgeBackPopIfNeeded();
}

void ZuviNavigationController::finishEdgeBackPopIfNeeded()
{
    if (m_edgeBackPopInProgress || m_stack.size() < 2)
        return;
    setEdgeBackPopInProgress(true);
    m_edgeBackGestureEnabled = false;
    emit edgeBackChanged();
    setNavigationBarHidden(false, false);
    // Popping clears the in-progress flag as every pop does; the recogniser
    // stays off until the pop animation has had its time.
    popViewController(true);
    m_scheduler->cancel(this, kResetCallName);
    m_scheduler->callAfter(this, kResetCallName, kGestureResetDelay,
                           [this] { resetEdgeBackPanGestureRecognizer(); });
}

void ZuviNavigationController::resetEdgeBackPanGestureRecognizer()
{
    m_edgeBackPopInProgress = false;
    m_edgeBackGestureEnabled = true;
    emit edgeBackChanged();
}

void ZuviNavigationController::setEdgeBackPopInProgress(bool inProgress)
{
    if (m_edgeBackPopInProgress == inProgress)
        return;
    m_edgeBackPopInProgress = inProgress;
    emit edgeBackChanged();
}

void ZuviNavigationController::showNavigationBarOnPhone()
{
    if (!ZuviIdiom::isPad())
        setNavigationBarHidden(false, false);
}

void ZuviNavigationController::releaseLater(ZuviViewController *controller)
{
    if (!controller)
        return;
    QPointer<ZuviViewController> guarded(controller);
    m_scheduler->callAfter(this, kReleaseCallName, kReleaseDelay, [guarded] {
        if (guarded)
            guarded->deleteLater();
    });
}
