#include "zuvifollowingrowsmodel.h"

#include "zuvifollowingcollectionviewcell.h"

#include <algorithm>

ZuviFollowingRowsModel::ZuviFollowingRowsModel(QObject *parent) : QAbstractListModel(parent) {}

int ZuviFollowingRowsModel::lineCountFor(int cards) const
{
    return (cards + m_columns - 1) / m_columns;
}

int ZuviFollowingRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : lineCountFor(cardCount());
}

QVariant ZuviFollowingRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const int first = index.row() * m_columns;
    if (role == FirstIndexRole)
        return first;
    if (role != CardsRole)
        return QVariant();
    return m_cards.mid(first, m_columns);
}

QHash<int, QByteArray> ZuviFollowingRowsModel::roleNames() const
{
    return {{CardsRole, "cards"}, {FirstIndexRole, "firstIndex"}};
}

void ZuviFollowingRowsModel::setColumnCount(int columns)
{
    columns = std::max(1, columns);
    if (columns == m_columns)
        return;
    beginResetModel();
    m_columns = columns;
    endResetModel();
    emit columnCountChanged();
}

void ZuviFollowingRowsModel::setRows(const QList<ZuviFollowingRow> &rows)
{
    beginResetModel();
    m_cards.clear();
    for (int i = 0; i < rows.size(); ++i) {
        QVariantMap card = ZuviFollowingCollectionViewCell::configurationForRow(rows.at(i));
        card.insert(QStringLiteral("index"), i);
        m_cards.append(card);
    }
    endResetModel();
    emit countChanged();
}

void ZuviFollowingRowsModel::showAppendedRows(const QList<ZuviFollowingRow> &rows,
                                              int previousCount)
{
    if (rows.size() <= previousCount)
        return;
    if (cardCount() != previousCount) {
        setRows(rows);
        return;
    }
    const auto cardAt = [&rows](int i) {
        QVariantMap card = ZuviFollowingCollectionViewCell::configurationForRow(rows.at(i));
        card.insert(QStringLiteral("index"), i);
        return card;
    };
    const int total = static_cast<int>(rows.size());
    const int oldLines = rowCount();
    // The cards that fill the old last line change that line; the rest
    // come as new lines, so the view inserts rather than reloads.
    int next = previousCount;
    if (previousCount % m_columns != 0) {
        const int fill = std::min(total, oldLines * m_columns);
        for (; next < fill; ++next)
            m_cards.append(cardAt(next));
        const QModelIndex last = index(oldLines - 1);
        emit dataChanged(last, last, {CardsRole});
    }
    if (next < total) {
        beginInsertRows(QModelIndex(), oldLines, lineCountFor(total) - 1);
        for (; next < total; ++next)
            m_cards.append(cardAt(next));
        endInsertRows();
    }
    emit countChanged();
}
