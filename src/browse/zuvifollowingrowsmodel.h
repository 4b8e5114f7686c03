#pragma once

#include "model/zuvifollowingrow.h"

#include <QAbstractListModel>
#include <QList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// The feed's cards grouped into lines of the grid: one model row per line,
// holding up to `columnCount` cards. Cards differ in height by kind, so the
// page lays each line out at the height of its tallest card; a list of lines
// gives that while keeping the view's delegates recycled.
class ZuviFollowingRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The feed's lines belong to the following screen")
    Q_PROPERTY(int count READ cardCount NOTIFY countChanged)
    Q_PROPERTY(int columnCount READ columnCount WRITE setColumnCount NOTIFY columnCountChanged)

public:
    enum Role {
        CardsRole = Qt::UserRole + 1, // the line's cards, each a map of what the card shows
        FirstIndexRole,               // the feed index of the line's first card
    };
    Q_ENUM(Role)

    explicit ZuviFollowingRowsModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int cardCount() const { return static_cast<int>(m_cards.size()); }
    int columnCount() const { return m_columns; }
    // A new column count regroups every line.
    void setColumnCount(int columns);

    // Replaces every card.
    void setRows(const QList<ZuviFollowingRow> &rows);
    // Shows a longer list whose head is shown already: when the model holds
    // exactly that head, the last (partial) line is updated and new lines
    // are inserted, so the view keeps its place; otherwise it reloads.
    void showAppendedRows(const QList<ZuviFollowingRow> &rows, int previousCount);

signals:
    void countChanged();
    void columnCountChanged();

private:
    int lineCountFor(int cards) const;

    QVariantList m_cards;
    int m_columns = 1;
};
