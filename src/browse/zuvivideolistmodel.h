#pragma once

#include "model/zuvivideoitem.h"

#include <QAbstractListModel>
#include <QColor>
#include <QList>
#include <QtQml/qqmlregistration.h>

// The videos of a grid or list screen, one row per card, with the texts each
// card shows already formatted.
class ZuviVideoListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Video lists belong to their screens")
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

public:
    enum Role {
        TitleRole = Qt::UserRole + 1, // the video's title
        CoverURLRole,                 // the cover picture's address
        OwnerNameRole,                // the uploader's name, shown on the placeholder cover
        OwnerTextRole,                // "UP <name>"
        PlayTextRole,                 // "播放 <count>" as a grid card shows it
        CompactPlayTextRole,          // "播放 <count>  评论 <count>" as a list row shows it
        DurationTextRole,             // the duration badge
        BVIDRole,                     // the video's id
        PlaceholderColorRole,         // the cover colour shown until the picture arrives
    };
    Q_ENUM(Role)

    explicit ZuviVideoListModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    QList<ZuviVideoItem> videos() const { return m_videos; }
    // Replaces every row.
    void setVideos(const QList<ZuviVideoItem> &videos);
    // Shows a longer list whose head is the current one: when the model
    // shows exactly that head, only the new rows are inserted; otherwise the
    // whole list is reloaded.
    void showAppendedVideos(const QList<ZuviVideoItem> &videos, int previousCount);
    ZuviVideoItem videoAt(int row) const { return m_videos.value(row); }

    // The cover colour of a card, chosen by the video id so a card keeps its
    // colour between reloads.
    static QColor placeholderColorForBVID(const QString &bvid);
    static QString ownerTextForItem(const ZuviVideoItem &item);
    static QString playTextForItem(const ZuviVideoItem &item, bool compact);

signals:
    void countChanged();

private:
    QList<ZuviVideoItem> m_videos;
};
