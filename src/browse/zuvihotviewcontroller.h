#pragma once

#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"
#include "zuvivideolistviewcontroller.h"

#include <QHash>
#include <QList>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
Q_MOC_INCLUDE("browse/zuvivideolistmodel.h")

class ZuviAPIClient;
class ZuviDefaults;
class ZuviLoginGate;
class ZuviVideoListModel;

// The "热门" tab: the popular list or the ranking of one content region at a
// time, picked from a strip of region buttons above the grid, optionally
// re-sorted on the device by play or comment count. Which regions the strip
// shows, and in what order, is a stored setting (edited on the region
// settings screen). The tab only works for a signed-in user, so every load
// goes through the login gate.
//
// Each region's list is cached as the service sent it; sorting always starts
// again from that order. There is no request counter: an answer is dropped
// when the selected region has changed since it was asked for.
class ZuviHotViewController : public ZuviVideoListViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the application shell")
    Q_PROPERTY(ZuviVideoListModel *videos READ videosModel CONSTANT)
    Q_PROPERTY(QStringList regionTitles READ regionTitles NOTIFY regionsChanged)
    Q_PROPERTY(int selectedRegionIndex READ selectedRegionIndex NOTIFY regionsChanged)
    Q_PROPERTY(bool phoneChromeHidden READ phoneChromeHidden NOTIFY phoneChromeChanged)
    Q_PROPERTY(int chromeAnimationMs READ chromeAnimationMs CONSTANT)
    Q_PROPERTY(QString brandText READ brandText CONSTANT)

public:
    // One entry of the region table. The popular list has no rid or route.
    struct HotRegionItem {
        QString key;
        QString title;
        int rid = -1;
        QString route;
        bool hasRanking() const { return rid >= 0; }
    };

    // Sort orders of the shown list.
    enum SortMode { SortDefault = 0, SortByPlayCount = 1, SortByCommentCount = 2 };

    static constexpr int kPageSize = 50;
    // The grid lays itself out again over this long when the phone chrome
    // hides or shows.
    static constexpr double kChromeAnimationDuration = 0.18;
    static const char *const kVisibleHotRegionKeysKey;
    static const char *const kPreferredHotSortModeKey;
    static const char *const kPopularRegionKey;
    static const char *const kAllRegionKey;

    // --- The region table and the stored choices (shared with the settings)
    static const QList<HotRegionItem> &hotRegionItems();
    static QStringList defaultHotRegionKeys();
    // Keeps, in order and once each, the strings that name a region of the
    // table; with nothing left, the popular list alone. An empty input
    // stands for every region when allowDefault is set.
    static QStringList sanitizedHotRegionKeysFromKeys(const QVariant &keys, bool allowDefault);
    static QStringList visibleHotRegionKeys(ZuviDefaults *defaults);
    static void setVisibleHotRegionKeys(const QStringList &keys, ZuviDefaults *defaults);
    static QList<HotRegionItem> visibleHotRegionItems(ZuviDefaults *defaults);
    static QString preferredHotRegionKey(ZuviDefaults *defaults);
    static QString titleForHotRegionKey(const QString &key);
    static const HotRegionItem *hotRegionItemForKey(const QString &key);
    // The stored sort order; anything outside 0...2 reads as the service's.
    static int preferredHotSortMode(ZuviDefaults *defaults);

    // --- Sorting
    // A count text as the lists show it ("9999", "1.2万", "3亿") as a number.
    static double countValueFromText(const QString &text);
    static QList<ZuviVideoItem> sortedVideosFromVideos(const QList<ZuviVideoItem> &videos,
                                                       int sortMode);

    ZuviHotViewController(ZuviAPIClient *client, ZuviDefaults *defaults, QObject *parent = nullptr);
    ~ZuviHotViewController() override;

    QUrl pageUrl() const override;

    // --- State
    QList<ZuviVideoItem> videos() const { return m_videos; }
    ZuviVideoListModel *videosModel() const { return m_model; }
    QList<ZuviVideoItem> popularVideos() const { return m_popularVideos; }
    bool hasCachedVideosForRegionKey(const QString &key) const;
    int selectedRegionIndex() const { return m_selectedRegionIndex; }
    int sortModeIndex() const { return m_sortModeIndex; }
    QString selectedSortTitle() const;
    QStringList appliedVisibleRegionKeys() const { return m_appliedVisibleRegionKeys; }
    QStringList regionTitles() const;
    bool isCheckingLoginState() const;
    bool isShowingLoginRequiredState() const { return m_showingLoginRequiredState; }
    bool phoneChromeHidden() const { return m_phoneChromeHidden; }
    int chromeAnimationMs() const { return int(kChromeAnimationDuration * 1000); }
    QString brandText() const { return QStringLiteral("lumetra"); }

    HotRegionItem selectedRegionItem() const;
    QString selectedRegionCacheKey() const { return selectedRegionItem().key; }
    QString selectedRegionName() const { return selectedRegionItem().title; }
    bool selectedRegionIsPopular() const;
    bool selectedRegionIsAllRanking() const;
    int indexForRegionKey(const QString &key) const;
    // The title the video screen names its source with.
    QString currentSourceTitle() const;

    // --- Actions
    Q_INVOKABLE void refreshButtonTapped() override;
    Q_INVOKABLE void tabBarItemReselected();
    // A tap on the region button at that index of the strip.
    Q_INVOKABLE void regionControlTapped(int index);
    Q_INVOKABLE void selectItem(int row);
    Q_INVOKABLE void gridDidScroll(double visibleHeight, double contentHeight, double offsetY,
                                   double topInset);
    Q_INVOKABLE QVariantMap layoutForWidth(double width) const;

    // --- Loading steps
    void reloadVideos();
    void loadPopularVideos();
    void loadRankingVideosIfNeeded();

    void viewWillAppear() override;
    void viewWillDisappear() override;

signals:
    void regionsChanged();
    void phoneChromeChanged();

private:
    void regionChanged(int index);
    void showVideos(const QList<ZuviVideoItem> &unsorted);
    void showHotLoginRequiredState();
    void applyPopularVideos(const QList<ZuviVideoItem> &received, const ZuviError &error);
    void applyRankingVideos(const QString &key, const QString &title,
                            const QList<ZuviVideoItem> &received, const ZuviError &error);
    bool applyVisibleRegionKeys(const QStringList &keys);
    void setPhoneChromeHidden(bool hidden);
    void reloadGrid();

    ZuviAPIClient *m_client;
    ZuviDefaults *m_defaults;
    ZuviVideoListModel *m_model;
    ZuviLoginGate *m_gate;

    QList<ZuviVideoItem> m_videos;
    QList<ZuviVideoItem> m_popularVideos;
    QHash<QString, QList<ZuviVideoItem>> m_videosByRegionKey;
    QList<HotRegionItem> m_visibleRegions;
    QStringList m_appliedVisibleRegionKeys;
    int m_selectedRegionIndex = 0;
    int m_sortModeIndex = SortDefault;
    bool m_showingLoginRequiredState = false;
    bool m_hasAppeared = false;

    double m_lastScrollOffsetY = 0;
    double m_scrollOffsetY = 0;
    double m_scrollTopInset = 0;
    bool m_phoneChromeHidden = false;
};
