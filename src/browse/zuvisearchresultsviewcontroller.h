#pragma once

#include "model/zuvivideoitem.h"
#include "platform/zuvierror.h"
#include "views/zuvistateview.h"
#include "zuvivideolistviewcontroller.h"

#include <QList>
#include <QPointer>
#include <QVariantMap>
Q_MOC_INCLUDE("browse/zuvivideolistmodel.h")

class ZuviAPIClient;
class ZuviVideoListModel;

// The video search results for one keyword, as a paged grid of cards. It has
// its own search bar, so the user can search again in place. Answers for an
// older request, or for a keyword that has since changed, are dropped.
class ZuviSearchResultsViewController : public ZuviVideoListViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from a search bar")
    Q_PROPERTY(QString keyword READ keyword NOTIFY keywordChanged)
    Q_PROPERTY(ZuviVideoListModel *videos READ videosModel CONSTANT)
    Q_PROPERTY(QString searchPlaceholder READ searchPlaceholder CONSTANT)

public:
    // More results than this on a page mean another page may follow.
    static constexpr int kFullPageThreshold = 19;

    ZuviSearchResultsViewController(const QString &keyword, ZuviAPIClient *client,
                                    QObject *parent = nullptr);

    QUrl pageUrl() const override;

    QString keyword() const { return m_keyword; }
    QList<ZuviVideoItem> videos() const { return m_videos; }
    ZuviVideoListModel *videosModel() const { return m_model; }
    int currentPage() const { return m_currentPage; }
    bool hasMorePages() const { return m_hasMorePages; }
    int requestID() const { return m_requestID; }
    QString searchPlaceholder() const { return QStringLiteral("搜索视频"); }

    static QString trimmedSearchText(const QString &text);

    Q_INVOKABLE void refreshButtonTapped() override;
    // The bar's search button; true when a new search started (the page
    // then drops the keyboard).
    Q_INVOKABLE bool searchBarSearchButtonClicked(const QString &text);
    Q_INVOKABLE void selectItem(int row);
    Q_INVOKABLE void gridDidScroll(double visibleHeight, double contentHeight, double offsetY);
    Q_INVOKABLE int columnCountForWidth(double width) const;
    Q_INVOKABLE QVariantMap layoutForWidth(double width) const;
    Q_INVOKABLE double searchBarWidth(double shorterScreenSide) const;

    void loadSearchResults();
    void loadSearchResultsReset(bool reset);
    void loadNextSearchPageIfNeeded();
    QList<ZuviVideoItem> videosByAppendingVideos(const QList<ZuviVideoItem> &received) const;

signals:
    void keywordChanged();

protected:
    void viewDidLoad() override;

private:
    void applyResults(const QList<ZuviVideoItem> &received, const ZuviError &error, int page,
                      bool reset);
    void setKeyword(const QString &keyword);

    QString m_keyword;
    ZuviAPIClient *m_client;
    ZuviVideoListModel *m_model;
    QList<ZuviVideoItem> m_videos;
    int m_currentPage = 0;
    bool m_hasMorePages = false;
    int m_requestID = 0;
};
