#pragma once

#include "app/zuviviewcontroller.h"

#include <QStringList>

class ZuviDefaults;

// "分区配置": which regions the ranking tab's strip shows and in what order.
// Two sections: the shown regions (with check marks, reordered by dragging
// in edit mode) and the hidden ones in table order. A tap moves a region
// between the two; every change is stored at once, and the ranking tab picks
// it up the next time it appears.
class ZuviHotRegionSettingsViewController : public ZuviViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened from the settings")
    Q_PROPERTY(QStringList selectedRegionKeys READ selectedRegionKeys NOTIFY regionsChanged)
    Q_PROPERTY(QStringList hiddenRegionKeys READ hiddenRegionKeys NOTIFY regionsChanged)
    Q_PROPERTY(QStringList selectedRegionTitles READ selectedRegionTitles NOTIFY regionsChanged)
    Q_PROPERTY(QStringList hiddenRegionTitles READ hiddenRegionTitles NOTIFY regionsChanged)
    Q_PROPERTY(QStringList sectionTitles READ sectionTitles CONSTANT)
    Q_PROPERTY(bool editing READ isEditing WRITE setEditing NOTIFY editingChanged)
    Q_PROPERTY(QString editButtonTitle READ editButtonTitle NOTIFY editingChanged)

public:
    enum Section { ShownSection = 0, HiddenSection = 1 };
    Q_ENUM(Section)

    explicit ZuviHotRegionSettingsViewController(ZuviDefaults *defaults, QObject *parent = nullptr);

    QUrl pageUrl() const override;

    QStringList selectedRegionKeys() const { return m_selectedRegionKeys; }
    QStringList hiddenRegionKeys() const { return m_hiddenRegionKeys; }
    QStringList selectedRegionTitles() const;
    QStringList hiddenRegionTitles() const;
    QStringList sectionTitles() const;
    bool isEditing() const { return m_editing; }
    void setEditing(bool editing);
    QString editButtonTitle() const;

    // A tap on a row: a shown region is hidden (unless it is the last one),
    // a hidden one is shown at the end of the strip. Taps do nothing while
    // editing, when rows are only dragged.
    Q_INVOKABLE void selectRow(int section, int row);
    // Where a dragged shown row may land: a drop into the hidden section
    // goes to the end of the shown one instead.
    Q_INVOKABLE QVariantMap targetForMove(int proposedSection, int proposedRow) const;
    // A finished drag (after targetForMove).
    Q_INVOKABLE void moveRow(int fromSection, int fromRow, int toSection, int toRow);

    void viewWillAppear() override;

signals:
    void regionsChanged();
    void editingChanged();
    // The page shows a one-button alert.
    void alertRequested(const QString &title, const QString &message, const QString &buttonTitle);

private:
    void reloadRegionKeys();
    void saveSelectedKeys();

    ZuviDefaults *m_defaults;
    QStringList m_selectedRegionKeys;
    QStringList m_hiddenRegionKeys;
    bool m_editing = false;
};
