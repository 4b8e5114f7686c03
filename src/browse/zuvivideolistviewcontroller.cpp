#include "zuvivideolistviewcontroller.h"

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
    emit stateViewChanged();
    old->deleteLater();
}
