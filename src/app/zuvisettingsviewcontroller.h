#pragma once

#include "zuviviewcontroller.h"

#include <QStringList>

class ZuviDebugLog;
class ZuviDefaults;
class ZuviImageLoader;
class ZuviNotificationCenter;
class ZuviRemoteConfig;
class ZuviRemoteNotificationPresenter;
class ZuviScheduler;

// "设置": the user's playback and list preferences, kept in user defaults,
// and the doors to the tools (region settings, notification history, and in
// developer mode the remote configuration, the direction guide and the debug
// log). Row details are read afresh when the screen appears and whenever the
// history, the log or the configuration says it changed.
class ZuviSettingsViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the profile screen")
    Q_PROPERTY(bool developerModeEnabled READ developerModeEnabled NOTIFY preferencesChanged)
    Q_PROPERTY(bool defaultDanmakuEnabled READ defaultDanmakuEnabled NOTIFY preferencesChanged)
    Q_PROPERTY(bool fullscreenDirectionGuideEnabled READ fullscreenDirectionGuideEnabled NOTIFY
                   preferencesChanged)
    Q_PROPERTY(
        int preferredQualityModeIndex READ preferredQualityModeIndex NOTIFY preferencesChanged)
    Q_PROPERTY(
        int preferredHotSortModeIndex READ preferredHotSortModeIndex NOTIFY preferencesChanged)
    Q_PROPERTY(QStringList qualityModeTitles READ qualityModeTitles CONSTANT)
    Q_PROPERTY(QStringList hotSortModeTitles READ hotSortModeTitles CONSTANT)
    Q_PROPERTY(int developerSectionRowCount READ developerSectionRowCount NOTIFY preferencesChanged)
    Q_PROPERTY(QString clearCacheDetailText READ clearCacheDetailText NOTIFY detailsChanged)
    Q_PROPERTY(QString regionDetailText READ regionDetailText NOTIFY detailsChanged)
    Q_PROPERTY(QString historyDetailText READ historyDetailText NOTIFY detailsChanged)
    Q_PROPERTY(QString remoteConfigDetailText READ remoteConfigDetailText NOTIFY detailsChanged)
    Q_PROPERTY(
        QString directionGuideDetailText READ directionGuideDetailText NOTIFY preferencesChanged)
    Q_PROPERTY(QString debugLogDetailText READ debugLogDetailText NOTIFY detailsChanged)

public:
    struct Services {
        ZuviDefaults *defaults = nullptr;
        ZuviNotificationCenter *center = nullptr;
        ZuviScheduler *scheduler = nullptr;
        ZuviDebugLog *log = nullptr;
        ZuviImageLoader *imageLoader = nullptr;
        ZuviRemoteConfig *remoteConfig = nullptr;
        ZuviRemoteNotificationPresenter *presenter = nullptr;
    };

    static const char *const kQualityModeKey;
    static const char *const kQualityMigratedKey;
    static const char *const kDanmakuEnabledKey;
    static const char *const kHotSortModeKey;
    static const char *const kDirectionGuideKey;
    static const char *const kVisibleHotRegionKeysKey;

    explicit ZuviSettingsViewController(const Services &services, QObject *parent = nullptr);
    ~ZuviSettingsViewController() override;

    // The process-wide services.
    static Services sharedServices();

    QUrl pageUrl() const override;
    void viewWillAppear() override;

    bool developerModeEnabled() const;
    bool defaultDanmakuEnabled() const;
    bool fullscreenDirectionGuideEnabled() const;
    // Converts a quality stored by older builds (four steps) once.
    int preferredQualityModeIndex() const;
    int preferredHotSortModeIndex() const;
    static QString titleForQualityModeIndex(int index);
    static QString titleForHotSortModeIndex(int index);
    QStringList qualityModeTitles() const;
    QStringList hotSortModeTitles() const;
    // How many regions the ranking tab shows, by its own cleaning rule.
    static int chosenHotRegionCount(ZuviDefaults *defaults);

    int developerSectionRowCount() const { return developerModeEnabled() ? 4 : 1; }
    QString clearCacheDetailText() const { return m_cacheCleared ? QStringLiteral("已删除") : ""; }
    QString regionDetailText() const;
    QString historyDetailText() const;
    QString remoteConfigDetailText() const;
    QString directionGuideDetailText() const;
    QString debugLogDetailText() const;

    // --- Controls
    Q_INVOKABLE void developerSwitchChanged(bool on);
    Q_INVOKABLE void directionGuideSwitchChanged(bool on);
    Q_INVOKABLE void danmakuSwitchChanged(bool on);
    Q_INVOKABLE void qualityControlChanged(int index);
    Q_INVOKABLE void hotSortControlChanged(int index);

    // --- Rows
    Q_INVOKABLE void clearCaches();
    Q_INVOKABLE void openRegionSettings();
    Q_INVOKABLE void openNotificationHistory();
    Q_INVOKABLE void openRemoteConfigDebug();
    Q_INVOKABLE void openDebugLog();

    // Reads the row details again.
    Q_INVOKABLE void refreshDetails();

signals:
    void preferencesChanged();
    void detailsChanged();
    void alertRequested(const QString &title, const QString &message, const QString &buttonTitle);

private:
    void push(ZuviViewController *controller);

    Services m_services;
    bool m_cacheCleared = false;
};
