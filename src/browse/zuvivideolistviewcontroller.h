#pragma once

#include "app/zuviviewcontroller.h"
#include "platform/zuvierror.h"
#include "views/zuvistateview.h"

#include <QPointer>

// What the paged video screens (the recommended grid, search results) share:
// the loading flags the page binds to and the state view laid over the list,
// whose retry button refreshes the screen.
class ZuviVideoListViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("A base of the video list screens")
    Q_PROPERTY(ZuviStateView *stateView READ stateView NOTIFY stateViewChanged)
    Q_PROPERTY(bool loading READ isLoading NOTIFY loadStateChanged)
    Q_PROPERTY(bool loadingMore READ isLoadingMore NOTIFY loadStateChanged)
    Q_PROPERTY(bool refreshEnabled READ isRefreshEnabled NOTIFY loadStateChanged)

public:
    explicit ZuviVideoListViewController(const QString &title, QObject *parent = nullptr);

    ZuviStateView *stateView() const { return m_stateView; }
    bool isLoading() const { return m_loading; }
    bool isLoadingMore() const { return m_loadingMore; }
    bool isRefreshEnabled() const { return m_refreshEnabled; }

    Q_INVOKABLE virtual void refreshButtonTapped() = 0;
    // Both list screens carry a search field in their bar.
    bool offersSearch() const override { return true; }
    // The login card's button: opens the profile tab, where the user signs in.
    Q_INVOKABLE void loginRequiredButtonTapped();

signals:
    void stateViewChanged();
    void loadStateChanged();

protected:
    void setLoadingFlags(bool loading, bool loadingMore);
    void setRefreshEnabled(bool enabled);
    // Shows the state view in a mode, making it on first use.
    void showStateMode(int mode, const QString &title, const QString &message,
                       const QString &buttonTitle);
    // The error state with the failure's own description (or the fallback
    // when it has none) and a retry button.
    void showLoadError(const ZuviError &error, const QString &title,
                       const QString &fallbackMessage);
    void clearStateView();

    // The states of the signed-in-only tabs (see ZuviLoginGate); each also
    // disables refresh. The screen empties its own list beside them.
    void showLoginCheckingState();
    void showLoginRequiredState(const QString &message);
    void showLoginCheckFailedState(const ZuviError &error);

private:
    QPointer<ZuviStateView> m_stateView;
    // The login card has a picture, a white ground and its own button
    // target; any other state starts again from a plain state view.
    bool m_stateViewIsLoginCard = false;
    bool m_loading = false;
    bool m_loadingMore = false;
    bool m_refreshEnabled = true;
};
