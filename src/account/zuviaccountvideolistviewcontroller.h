#pragma once

#include "app/zuviphonechromecontroller.h"
#include "browse/zuvivideolistviewcontroller.h"
#include "model/zuvivideoitem.h"

#include <QList>
#include <QVariantMap>
Q_MOC_INCLUDE("browse/zuvivideolistmodel.h")

class ZuviAPIClient;
class ZuviVideoListModel;

// One of the signed-in user's own video lists, opened from the profile:
// the watch history ("history"), the watch-later list ("watchLater") or the
// default favourites folder ("favorites", which needs the member id). Cards
// as in the recommended grid on a tablet, compact rows on a phone.
class ZuviAccountVideoListViewController : public ZuviVideoListViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the profile")
    Q_PROPERTY(ZuviVideoListModel *videos READ videosModel CONSTANT)

public:
    ZuviAccountVideoListViewController(const QString &title, const QString &listKind, qint64 mid,
                                       ZuviAPIClient *client, QObject *parent = nullptr);

    QUrl pageUrl() const override;

    QString listKind() const { return m_listKind; }
    qint64 mid() const { return m_mid; }
    QList<ZuviVideoItem> videos() const { return m_videos; }
    ZuviVideoListModel *videosModel() const { return m_model; }
    bool phoneChromeHidden() const { return m_phoneChromeHidden; }

    // A tablet shows 4 columns from 900 points on, else 3; a phone one row
    // per video.
    Q_INVOKABLE static int columnCountForWidth(double width);
    Q_INVOKABLE QVariantMap layoutForWidth(double width) const;

    void loadVideos();
    Q_INVOKABLE void refreshButtonTapped() override;
    Q_INVOKABLE void selectItem(int row);
    Q_INVOKABLE void gridDidScroll(double visibleHeight, double contentHeight, double offsetY,
                                   double topInset);
    void viewWillAppear() override;
    void viewWillDisappear() override;

protected:
    void viewDidLoad() override;

private:
    void applyVideos(const QList<ZuviVideoItem> &videos, const ZuviError &error);
    void showChrome();

    QString m_listKind;
    qint64 m_mid;
    ZuviAPIClient *m_client;
    ZuviVideoListModel *m_model;
    QList<ZuviVideoItem> m_videos;
    int m_requestID = 0;
    ZuviScrollMetrics m_scroll;
    double m_lastScrollOffsetY = 0;
    bool m_phoneChromeHidden = false;
};
