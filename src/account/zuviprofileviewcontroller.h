#pragma once

#include "app/zuviviewcontroller.h"
#include "model/zuviuserprofile.h"
#include "model/zuvivideoitem.h"

#include <QList>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <optional>
Q_MOC_INCLUDE("browse/zuvivideolistmodel.h")

class ZuviAPIClient;
class ZuviScheduler;
class ZuviVideoListModel;
class ZuviLoginViewController;
struct ZuviError;

// The "我的" tab: who is signed in (the card with avatar, name, level,
// membership and the coin, following and follower counts), the entries to
// the history, watch-later and favourites lists, on tablets a panel with the
// most recently watched videos, and the login or logout button. Answers that
// belong to an older load, or arrive after a logout, are dropped by number.
class ZuviProfileViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The profile tab is made by the application shell")
    Q_PROPERTY(bool loggedIn READ isLoggedIn NOTIFY profileChanged)
    Q_PROPERTY(bool loadingProfile READ isLoadingProfile NOTIFY profileChanged)
    Q_PROPERTY(QString displayName READ displayName NOTIFY profileChanged)
    Q_PROPERTY(QString avatarCharacter READ avatarCharacter NOTIFY profileChanged)
    Q_PROPERTY(QString avatarSource READ avatarSource NOTIFY profileChanged)
    Q_PROPERTY(QString levelTag READ levelTag NOTIFY profileChanged)
    Q_PROPERTY(QString membershipTag READ membershipTag NOTIFY profileChanged)
    Q_PROPERTY(bool membershipHighlighted READ isMembershipHighlighted NOTIFY profileChanged)
    Q_PROPERTY(QStringList statTitles READ statTitles CONSTANT)
    Q_PROPERTY(QStringList statValues READ statValues NOTIFY profileChanged)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY profileChanged)
    Q_PROPERTY(QString loginButtonTitle READ loginButtonTitle NOTIFY profileChanged)
    Q_PROPERTY(bool loginButtonEnabled READ isLoginButtonEnabled NOTIFY profileChanged)
    Q_PROPERTY(QStringList entryTitles READ entryTitles CONSTANT)
    Q_PROPERTY(QList<QUrl> entryIcons READ entryIcons CONSTANT)
    Q_PROPERTY(bool showsRecentPanel READ showsRecentPanel CONSTANT)
    Q_PROPERTY(QString recentTitle READ recentTitle CONSTANT)
    Q_PROPERTY(ZuviVideoListModel *recentVideos READ recentVideosModel CONSTANT)
    Q_PROPERTY(QString recentStatusText READ recentStatusText NOTIFY recentChanged)
    Q_PROPERTY(QString brandText READ brandText CONSTANT)
    Q_PROPERTY(bool hasSettings READ hasSettings NOTIFY settingsChanged)

public:
    static constexpr int kRecentVideoCount = 9;
    // Makes the settings screen the bar's button opens; the application
    // shell provides it, and without one the button is not shown.
    using ScreenFactory = std::function<ZuviViewController *()>;

    ZuviProfileViewController(ZuviAPIClient *client, ZuviScheduler *scheduler,
                              QObject *parent = nullptr);

    QUrl pageUrl() const override;

    std::optional<ZuviUserProfile> profile() const { return m_profile; }
    bool isLoggedIn() const { return m_profile && m_profile->isLogin; }
    bool isLoadingProfile() const { return m_loadingProfile; }
    bool isLoadingRecent() const { return m_loadingRecent; }
    // The status shown on the logged-out card; empty when there is none.
    QString statusMessage() const { return m_statusMessage; }

    QString displayName() const;
    QString avatarCharacter() const;
    QString avatarSource() const;
    QString levelTag() const;
    QString membershipTag() const;
    bool isMembershipHighlighted() const;
    QStringList statTitles() const;
    QStringList statValues() const;
    QString statusLine() const;
    QString loginButtonTitle() const;
    bool isLoginButtonEnabled() const { return !m_loadingProfile; }
    QStringList entryTitles() const;
    QList<QUrl> entryIcons() const;
    QString recentTitle() const { return QStringLiteral("最近观看"); }
    ZuviVideoListModel *recentVideosModel() const { return m_recentModel; }
    QList<ZuviVideoItem> recentVideos() const { return m_recentVideos; }
    QString recentStatusText() const { return m_recentStatusText; }
    QString brandText() const { return QStringLiteral("lumetra"); }

    // The recent panel is a tablet's; a phone never loads it.
    static bool showsRecentPanel();
    Q_INVOKABLE static int recentColumnCountForWidth(double width);
    static QList<ZuviVideoItem> firstVideosFromVideos(const QList<ZuviVideoItem> &videos,
                                                      int maxCount);
    // The value of a "硬币 12" text without its label; "--" when empty.
    static QString statValueFromText(const QString &text);

    void reloadProfile();
    void loadRecentVideos();
    Q_INVOKABLE void refreshButtonTapped();
    Q_INVOKABLE void openEntryAtIndex(int index);
    Q_INVOKABLE void loginButtonTapped();
    Q_INVOKABLE void selectRecentItem(int row);
    void logoutButtonTapped();
    void setSettingsScreenFactory(ScreenFactory factory);
    bool hasSettings() const { return bool(m_settingsFactory); }
    Q_INVOKABLE void settingsButtonTapped();
    void zuviLoginViewControllerDidLogin(ZuviLoginViewController *controller);

signals:
    void profileChanged();
    void recentChanged();
    void settingsChanged();

protected:
    void viewDidLoad() override;

private:
    void applyProfile(const std::optional<ZuviUserProfile> &profile, const ZuviError &error);
    void applyRecentVideos(const QList<ZuviVideoItem> &videos, const ZuviError &error);
    void clearRecentVideos();
    void setRecentStatusText(const QString &text);

    ZuviAPIClient *m_client;
    ZuviScheduler *m_scheduler;
    ZuviVideoListModel *m_recentModel;
    ScreenFactory m_settingsFactory;
    std::optional<ZuviUserProfile> m_profile;
    QList<ZuviVideoItem> m_recentVideos;
    QString m_statusMessage;
    QString m_recentStatusText;
    bool m_loadingProfile = false;
    bool m_loadingRecent = false;
    int m_profileRequestID = 0;
    int m_recentRequestID = 0;
};
