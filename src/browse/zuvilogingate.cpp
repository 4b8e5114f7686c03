#include "zuvilogingate.h"

#include "model/zuviuserprofile.h"
#include "net/zuviapiclient.h"
#include "platform/zuvilifetime.h"

ZuviLoginGate::ZuviLoginGate(ZuviAPIClient *client, Handlers handlers, QObject *parent)
    : QObject(parent), m_client(client), m_handlers(std::move(handlers))
{
}

void ZuviLoginGate::performWhenLoggedIn(std::function<void()> action)
{
    if (!m_client->credentialCookie().isEmpty()) {
        action();
        return;
    }
    if (m_checking)
        return;
    m_checking = true;
    if (m_handlers.showChecking)
        m_handlers.showChecking();
    m_client->fetchCurrentUserProfileWithCompletion(
        ZuviLifetime::bound(this, [this, action](const std::optional<ZuviUserProfile> &profile,
                                                 const ZuviError &error) {
            m_checking = false;
            if (profile && profile->isLogin && profile->mid > 0) {
                action();
            } else if (!error.hasError() || isLoginRequiredError(error)) {
                if (m_handlers.showLoginRequired)
                    m_handlers.showLoginRequired();
            } else if (m_handlers.showCheckFailed) {
                m_handlers.showCheckFailed(error);
            }
        }));
}

bool ZuviLoginGate::isLoginRequiredError(const ZuviError &error)
{
    if (!error.hasError())
        return false;
    if (error.code == -101)
        return true;
    const QString text = error.localizedDescription();
    if (text.isEmpty())
        return true;
    for (const char *phrase : {"未登录", "请先登录", "登录过期", "登录失效"}) {
        if (text.contains(QString::fromUtf8(phrase)))
            return true;
    }
    return false;
}
