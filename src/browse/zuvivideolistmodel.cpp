#include "zuvivideolistmodel.h"

#include <QHash>

ZuviVideoListModel::ZuviVideoListModel(QObject *parent) : QAbstractListModel(parent) {}

int ZuviVideoListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_videos.size());
}

QVariant ZuviVideoListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ZuviVideoItem &item = m_videos.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return item.title;
    case CoverURLRole:
        return item.coverURLString;
    case OwnerNameRole:
        return item.ownerName;
    case OwnerTextRole:
        return ownerTextForItem(item);
    case PlayTextRole:
        return playTextForItem(item, false);
    case CompactPlayTextRole:
        return playTextForItem(item, true);
    case DurationTextRole:
        return item.durationText;
    case BVIDRole:
        return item.bvid;
    case PlaceholderColorRole:
        return placeholderColorForBVID(item.bvid);
    default:
        return {};
    }
}

QHash<int, QByteArray> ZuviVideoListModel::roleNames() const
{
    return {
        {TitleRole, "title"},
        {CoverURLRole, "coverURL"},
        {OwnerNameRole, "ownerName"},
        {OwnerTextRole, "ownerText"},
        {PlayTextRole, "playText"},
        {CompactPlayTextRole, "compactPlayText"},
        {DurationTextRole, "durationText"},
        {BVIDRole, "bvid"},
        {PlaceholderColorRole, "placeholderColor"},
    };
}

void ZuviVideoListModel::setVideos(const QList<ZuviVideoItem> &videos)
{
    const int before = rowCount();
    beginResetModel();
    m_videos = videos;
    endResetModel();
    if (before != rowCount())
        emit countChanged();
}

void ZuviVideoListModel::showAppendedVideos(const QList<ZuviVideoItem> &videos, int previousCount)
{
    if (videos.size() <= previousCount)
        return;
    if (rowCount() != previousCount) {
        setVideos(videos);
        return;
    }
    beginInsertRows(QModelIndex(), previousCount, static_cast<int>(videos.size()) - 1);
    m_videos = videos;
    endInsertRows();
    emit countChanged();
}

QColor ZuviVideoListModel::placeholderColorForBVID(const QString &bvid)
{
    static const QColor colors[4] = {
        QColor::fromRgbF(0.36, 0.58, 0.82),
        QColor::fromRgbF(0.78, 0.45, 0.54),
        QColor::fromRgbF(0.42, 0.68, 0.52),
        QColor::fromRgbF(0.74, 0.55, 0.34),
    };
    // A fixed seed keeps the colour the same from one run to the next.
    return colors[qHash(bvid, 0) % 4];
}

QString ZuviVideoListModel::ownerTextForItem(const ZuviVideoItem &item)
{
    return QStringLiteral("UP %1").arg(item.ownerName);
}

QString ZuviVideoListModel::playTextForItem(const ZuviVideoItem &item, bool compact)
{
    const QString plays = item.playCountText.isEmpty() ? QStringLiteral("0") : item.playCountText;
    if (!compact)
        return QStringLiteral("播放 %1").arg(plays);
    const QString comments =
        item.commentCountText.isEmpty() ? QStringLiteral("0") : item.commentCountText;
    return QStringLiteral("播放 %1  评论 %2").arg(plays, comments);
}
