#pragma once

#include "app/zuviphonechromecontroller.h"
#include "model/zuvifollowingrow.h"
#include "platform/zuvierror.h"
#include "zuvivideolistviewcontroller.h"

#include <QList>
#include <QStringList>
#include <QVariantMap>
Q_MOC_INCLUDE("browse/zuvifollowingrowsmodel.h")

class ZuviAPIClient;
class ZuviLoginGate;
class ZuviScheduler;
class ZuviFollowingRowsModel;

// The "关注" tab: the activity of the authors the user follows, as a grid of
// cards of five kinds, paged by the offset the service hands back. Rows
// already shown are dropped when they come again, a tablet filters the feed
// with three segments and a phone shows video rows only. The tab needs a
// signed-in user and shares the account check of the ranking tab.
class ZuviFollowingViewController : public ZuviVideoListViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the application shell")
    Q_PROPERTY(ZuviFollowingRowsModel *rows READ rowsModel CONSTANT)
    Q_PROPERTY(bool showsSegmentControl READ showsSegmentControl CONSTANT)
    Q_PROPERTY(QStringList segmentTitles READ segmentTitles CONSTANT)
    Q_PROPERTY(int selectedSegment READ selectedSegment NOTIFY selectedSegmentChanged)
    Q_PROPERTY(QString brandText READ brandText CONSTANT)

public:
    enum Segment { All = 0, Videos = 1, Posts = 2 };

    // After each page, the screen checks this much later whether the rows
    // fill the view, and loads on while they do not.
    static constexpr double kViewportCheckDelay = 0.05;
    static const char *const kViewportCheckCallName;
    // Content no taller than the view plus this counts as not filling it.
    static constexpr double kViewportSlack = 24;

    ZuviFollowingViewController(ZuviAPIClient *client, ZuviScheduler *scheduler,
                                QObject *parent = nullptr);
    ~ZuviFollowingViewController() override;

    QUrl pageUrl() const override;
    // The feed's bar holds the segments, not a search field; the search
    // shortcut goes to the recommended tab instead.
    bool offersSearch() const override { return false; }

    // --- State
    QList<ZuviFollowingRow> rows() const { return m_rows; }
    ZuviFollowingRowsModel *rowsModel() const { return m_model; }
    int currentPage() const { return m_currentPage; }
    bool hasMoreRows() const { return m_hasMoreRows; }
    QString nextOffset() const { return m_nextOffset; }
    int requestID() const { return m_requestID; }
    bool isCheckingLoginState() const;
    bool isShowingLoginRequiredState() const { return m_showingLoginRequiredState; }
    bool showsSegmentControl() const { return m_showsSegmentControl; }
    QStringList segmentTitles() const;
    int selectedSegment() const { return m_selectedSegment; }
    QString brandText() const { return QStringLiteral("lumetra"); }

    // --- Actions
    Q_INVOKABLE void refreshButtonTapped() override;
    Q_INVOKABLE void tabBarItemReselected();
    Q_INVOKABLE void segmentChanged(int segment);
    // The card of that feed index was tapped; only video rows open a screen.
    Q_INVOKABLE void selectItem(int index);
    // The page reports its grid after every scroll and every size change.
    Q_INVOKABLE void gridDidScroll(double visibleHeight, double contentHeight, double offsetY,
                                   double topInset);

    // --- Layout
    Q_INVOKABLE int columnCountForWidth(double width) const;
    // columns, insets, spacing, itemWidth and largePreview (phone video cards).
    Q_INVOKABLE QVariantMap layoutForWidth(double width) const;

    // --- Loading steps
    void cancelRowsRequest();
    void loadRowsReset(bool reset);
    void beginRowsRequestReset(bool reset);
    void loadNextRowsIfNeeded();
    void loadNextRowsIfContentDoesNotFillViewport();
    void applyRows(const QList<ZuviFollowingRow> &received, bool reset);
    QList<ZuviFollowingRow> rowsByAppendingRows(const QList<ZuviFollowingRow> &received) const;
    QList<ZuviFollowingRow>
    filteredRowsForSelectedSegment(const QList<ZuviFollowingRow> &rows) const;
    QString feedTypeForSelectedSegment() const;
    void updateBackgroundState();
    // A row's identity for dropping repeats; empty when it has none.
    static QString identityForRow(const ZuviFollowingRow &row);

    void viewWillAppear() override;
    void viewWillDisappear() override;

signals:
    void selectedSegmentChanged();

protected:
    void viewDidLoad() override;

private:
    void performWhenLoggedIn(std::function<void()> action);
    void applyAnswer(const QList<ZuviFollowingRow> &received, bool hasMore, const QString &offset,
                     const QString &sentOffset, const ZuviError &error, int page, bool reset);
    void scheduleViewportCheck();
    void emptyRows();
    bool hidesPhoneTabBarOnScroll() const;

    ZuviAPIClient *m_client;
    ZuviScheduler *m_scheduler;
    ZuviLoginGate *m_gate;
    ZuviFollowingRowsModel *m_model;
    bool m_showsSegmentControl;

    QList<ZuviFollowingRow> m_rows;
    int m_currentPage = 0;
    bool m_hasMoreRows = false;
    QString m_nextOffset;
    int m_requestID = 0;
    int m_selectedSegment = All;
    bool m_showingLoginRequiredState = false;

    ZuviScrollMetrics m_scroll;
    double m_lastScrollOffsetY = 0;
    bool m_phoneChromeHidden = false;
};
