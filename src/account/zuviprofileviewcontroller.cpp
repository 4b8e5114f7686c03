#include "zuviprofileviewcontroller.h"

#include "app/zuviimageassets.h"
#include "app/zuvinavigationcontroller.h"
#include "browse/zuvivideolistmodel.h"
#include "browse/zuvivideoscreenopener.h"
#include "images/zuviimageprovider.h"
#include "net/zuviapiclient.h"
#include "platform/zuviidiom.h"
#include "platform/zuvilifetime.h"
#include "zuviaccountvideolistviewcontroller.h"
#include "zuviloginviewcontroller.h"

#include <algorithm>

namespace {
struct Entry {
    const char *title;
    const char *icon;
    const char *listKind;
};
const Entry kEntries[] = {
    {"历史记录", "profile_entry_history", "history"},
    {"稍后再看", "profile_entry_watch_later", "watchLater"},
    {"我的收藏", "profile_entry_favorites", "favorites"},
};
// The avatar is drawn at up to 80 points; twice that keeps it sharp.
constexpr int kAvatarPixels = 160;
} // namespace

ZuviProfileViewController::ZuviProfileViewController(ZuviAPIClient *client,
                                                     ZuviScheduler *scheduler, QObject *parent)
    : ZuviViewController(QStringLiteral("我的"), parent), m_client(client), m_scheduler(scheduler),
      m_recentModel(new ZuviVideoListModel(this))
{
}

QUrl ZuviProfileViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("ProfilePage.qml"));
}

void ZuviProfileViewController::viewDidLoad()
{
    reloadProfile();
}

// --- What the card shows

QString ZuviProfileViewController::displayName() const
{
    if (isLoggedIn())
        return m_profile->userName.isEmpty() ? QStringLiteral("已登录用户") : m_profile->userName;
    return m_loadingProfile ? QStringLiteral("检查登录中") : QStringLiteral("未登录用户");
}

QString ZuviProfileViewController::avatarCharacter() const
{
    if (!isLoggedIn())
        return QStringLiteral("未");
    // The first character as the user sees it, a surrogate pair included.
    const QString name = m_profile->userName.trimmed();
    if (name.isEmpty())
        return QStringLiteral("已");
    return name.left(name.at(0).isHighSurrogate() && name.size() > 1 ? 2 : 1);
}

QString ZuviProfileViewController::avatarSource() const
{
    if (!isLoggedIn() || m_profile->faceURLString.isEmpty())
        return QString();
    return ZuviImageProvider::thumbnailSourceURL(m_profile->faceURLString, kAvatarPixels,
                                                 kAvatarPixels, 80, m_profile->faceURLString);
}

QString ZuviProfileViewController::levelTag() const
{
    if (!isLoggedIn())
        return QString();
    return m_profile->levelText.isEmpty() ? QStringLiteral("LV") : m_profile->levelText;
}

QString ZuviProfileViewController::membershipTag() const
{
    if (!isLoggedIn())
        return QString();
    return m_profile->vipText.isEmpty() ? QStringLiteral("会员") : m_profile->vipText;
}

bool ZuviProfileViewController::isMembershipHighlighted() const
{
    return membershipTag().contains(QStringLiteral("大会员"));
}

QStringList ZuviProfileViewController::statTitles() const
{
    return {QStringLiteral("硬币"), QStringLiteral("关注"), QStringLiteral("粉丝")};
}

QStringList ZuviProfileViewController::statValues() const
{
    if (!isLoggedIn())
        return {QStringLiteral("--"), QStringLiteral("--"), QStringLiteral("--")};
    return {statValueFromText(m_profile->coinText), statValueFromText(m_profile->followingText),
            statValueFromText(m_profile->followerText)};
}

QString ZuviProfileViewController::statValueFromText(const QString &text)
{
    // The record's texts read "硬币 12"; the column has its own title.
    const int space = text.indexOf(QLatin1Char(' '));
    const QString value = (space >= 0 ? text.mid(space + 1) : text).trimmed();
    return value.isEmpty() ? QStringLiteral("--") : value;
}

QString ZuviProfileViewController::statusLine() const
{
    if (isLoggedIn())
        return QStringLiteral("这个人很神秘，什么都没有写");
    return m_statusMessage.isEmpty() ? QStringLiteral("登录后可查看个人内容。") : m_statusMessage;
}

QString ZuviProfileViewController::loginButtonTitle() const
{
    return isLoggedIn() ? QStringLiteral("退出登录") : QStringLiteral("扫码登录");
}

QStringList ZuviProfileViewController::entryTitles() const
{
    QStringList titles;
    for (const Entry &entry : kEntries)
        titles.append(QString::fromUtf8(entry.title));
    return titles;
}

QList<QUrl> ZuviProfileViewController::entryIcons() const
{
    QList<QUrl> icons;
    for (const Entry &entry : kEntries)
        icons.append(ZuviImageAssets::urlForImageNamed(QString::fromLatin1(entry.icon)));
    return icons;
}

bool ZuviProfileViewController::showsRecentPanel()
{
    return ZuviIdiom::isPad();
}

int ZuviProfileViewController::recentColumnCountForWidth(double width)
{
    if (ZuviIdiom::isPad())
        return width >= 560 ? 3 : (width >= 340 ? 2 : 1);
    return width >= 300 ? 2 : 1;
}

QList<ZuviVideoItem>
ZuviProfileViewController::firstVideosFromVideos(const QList<ZuviVideoItem> &videos, int maxCount)
{
    return videos.mid(0, std::max(0, maxCount));
}

// --- Loading

void ZuviProfileViewController::reloadProfile()
{
    m_loadingProfile = true;
    m_statusMessage = QStringLiteral("正在检查登录状态...");
    emit profileChanged();
    const int requestID = ++m_profileRequestID;
    m_client->fetchCurrentUserProfileWithCompletion(
        ZuviLifetime::bound(this, [this, requestID](const std::optional<ZuviUserProfile> &profile,
                                                    const ZuviError &error) {
            if (requestID == m_profileRequestID)
                applyProfile(profile, error);
        }));
}

void ZuviProfileViewController::applyProfile(const std::optional<ZuviUserProfile> &profile,
                                             const ZuviError &error)
{
    m_loadingProfile = false;
    m_profile = profile;
    if (error.hasError())
        m_statusMessage = QStringLiteral("登录状态检查失败：%1").arg(error.localizedDescription());
    else if (!isLoggedIn())
        m_statusMessage = QStringLiteral("未登录，请扫码登录。");
    else
        m_statusMessage.clear();
    emit profileChanged();
    if (isLoggedIn() && showsRecentPanel())
        loadRecentVideos();
    else
        clearRecentVideos();
}

void ZuviProfileViewController::loadRecentVideos()
{
    m_loadingRecent = true;
    m_recentVideos.clear();
    m_recentModel->setVideos(m_recentVideos);
    setRecentStatusText(QStringLiteral("正在加载最近观看"));
    const int requestID = ++m_recentRequestID;
    m_client->fetchHistoryVideosWithCompletion(ZuviLifetime::bound(
        this, [this, requestID](const QList<ZuviVideoItem> &videos, const ZuviError &error) {
            if (requestID == m_recentRequestID)
                applyRecentVideos(videos, error);
        }));
}

void ZuviProfileViewController::applyRecentVideos(const QList<ZuviVideoItem> &videos,
                                                  const ZuviError &error)
{
    m_loadingRecent = false;
    if (error.hasError()) {
        clearRecentVideos();
        setRecentStatusText(QStringLiteral("最近观看加载失败"));
        return;
    }
    m_recentVideos = firstVideosFromVideos(videos, kRecentVideoCount);
    m_recentModel->setVideos(m_recentVideos);
    setRecentStatusText(m_recentVideos.isEmpty() ? QStringLiteral("暂无最近观看") : QString());
}

void ZuviProfileViewController::clearRecentVideos()
{
    // A pending history answer must not refill a cleared panel.
    ++m_recentRequestID;
    m_loadingRecent = false;
    m_recentVideos.clear();
    m_recentModel->setVideos(m_recentVideos);
    setRecentStatusText(QString());
}

void ZuviProfileViewController::setRecentStatusText(const QString &text)
{
    if (m_recentStatusText == text)
        return;
    m_recentStatusText = text;
    emit recentChanged();
}

// --- Actions

void ZuviProfileViewController::refreshButtonTapped()
{
    reloadProfile();
}

void ZuviProfileViewController::openEntryAtIndex(int index)
{
    if (!isLoggedIn() || index < 0 || index >= int(std::size(kEntries)))
        return;
    ZuviNavigationController *navigation = navigationController();
    if (!navigation)
        return;
    const Entry &entry = kEntries[index];
    auto *list = new ZuviAccountVideoListViewController(QString::fromUtf8(entry.title),
                                                        QString::fromLatin1(entry.listKind),
                                                        m_profile->mid, m_client);
    list->setHidesBottomBarWhenPushed(true);
    navigation->pushViewController(list, true);
}

void ZuviProfileViewController::loginButtonTapped()
{
    if (m_loadingProfile)
        return;
    if (isLoggedIn()) {
        logoutButtonTapped();
        return;
    }
    ZuviNavigationController *navigation = navigationController();
    if (!navigation)
        return;
    auto *login = new ZuviLoginViewController(m_client, m_scheduler);
    // The connection goes with this screen, so a login confirmed after the
    // profile is gone reaches nobody.
    connect(login, &ZuviLoginViewController::didLogin, this,
            &ZuviProfileViewController::zuviLoginViewControllerDidLogin);
    navigation->pushViewController(login, true);
}

void ZuviProfileViewController::logoutButtonTapped()
{
    // Signing out is local: the session cookie is forgotten and the service
    // is not asked. Answers still on their way are dropped by number.
    m_client->clearCredentialCookie();
    ++m_profileRequestID;
    m_profile.reset();
    clearRecentVideos();
    m_loadingProfile = false;
    m_statusMessage = QStringLiteral("已退出登录。");
    emit profileChanged();
}

void ZuviProfileViewController::setSettingsScreenFactory(ScreenFactory factory)
{
    m_settingsFactory = std::move(factory);
    emit settingsChanged();
}

void ZuviProfileViewController::settingsButtonTapped()
{
    ZuviNavigationController *navigation = navigationController();
    if (!m_settingsFactory || !navigation)
        return;
    ZuviViewController *settings = m_settingsFactory();
    settings->setHidesBottomBarWhenPushed(true);
    navigation->pushViewController(settings, true);
}

void ZuviProfileViewController::zuviLoginViewControllerDidLogin(ZuviLoginViewController *)
{
    reloadProfile();
}

void ZuviProfileViewController::selectRecentItem(int row)
{
    if (row < 0 || row >= m_recentVideos.size())
        return;
    ZuviVideoScreenOpener::open(navigationController(), m_recentVideos.at(row), recentTitle());
}
