#include "zuvivideolistviewcontroller.h"

#include "app/zuvitabbarcontroller.h"

ZuviVideoListViewController::ZuviVideoListViewController(const QString &title, QObject *parent)
    : ZuviViewController(title, parent)
{
}

void ZuviVideoListViewController::setLoadingFlags(bool loading, bool loadingMore)
{
    if (m_loading == loading && m_loadingMore == loadingMore)
        return;
    m_loading = loading;
    m_loadingMore = loadingMore;
    emit loadStateChanged();
}

void ZuviVideoListViewController::setRefreshEnabled(bool enabled)
{
    if (m_refreshEnabled == enabled)
        return;
    m_refreshEnabled = enabled;
    emit loadStateChanged();
}

void ZuviVideoListViewController::showStateMode(int mode, const QString &title,
                                                const QString &message, const QString &buttonTitle)
{
    if (m_stateViewIsLoginCard)
        clearStateView();
    if (!m_stateView) {
        m_stateView = new ZuviStateView(this);
        m_stateView->setRetryTarget(this, [this] { refreshButtonTapped(); });
        emit stateViewChanged();
    }
    m_stateView->setMode(mode, title, message, buttonTitle);
}

void ZuviVideoListViewController::showLoadError(const ZuviError &error, const QString &title,
                                                const QString &fallbackMessage)
{
    const QString text = error.localizedDescription();
    showStateMode(ZuviStateView::Error, title, text.isEmpty() ? fallbackMessage : text,
                  QStringLiteral("重试"));
}

void ZuviVideoListViewController::clearStateView()
{
    if (!m_stateView)
        return;
    ZuviStateView *old = m_stateView;
    m_stateView = nullptr;
    m_stateViewIsLoginCard = false;
    emit stateViewChanged();
    old->deleteLater();
}

void ZuviVideoListViewController::showLoginCheckingState()
{
    setRefreshEnabled(false);
    showStateMode(ZuviStateView::Loading, QStringLiteral("正在检查登录状态"),
                  QStringLiteral("正在确认账号状态。"), QString());
}

void ZuviVideoListViewController::showLoginRequiredState(const QString &message)
{
    setRefreshEnabled(false);
    if (!m_stateViewIsLoginCard) {
        clearStateView();
        m_stateView = new ZuviStateView(this);
        m_stateView->setRetryTarget(this, [this] { loginRequiredButtonTapped(); });
        m_stateView->setWhiteBackground(true);
        m_stateView->setUsesProminentActionButton(true);
        m_stateViewIsLoginCard = true;
        emit stateViewChanged();
    }
    m_stateView->setMode(ZuviStateView::Empty, QStringLiteral("用户未登录"), message,
                         QStringLiteral("登录"));
    m_stateView->setImageNamed(QString::fromLatin1(ZuviStateView::kDefaultErrorImageName));
}

void ZuviVideoListViewController::showLoginCheckFailedState(const ZuviError &error)
{
    setRefreshEnabled(true);
    showLoadError(error, QStringLiteral("登录状态检查失败"), QStringLiteral("请稍后重试。"));
}

void ZuviVideoListViewController::loginRequiredButtonTapped()
{
    // The profile is the fourth tab of the root.
    ZuviTabBarController *tabs = tabBarController();
    if (tabs && tabs->count() >= 4)
        tabs->selectTab(3);
}
