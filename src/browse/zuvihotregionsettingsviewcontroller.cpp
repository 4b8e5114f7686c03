#include "zuvihotregionsettingsviewcontroller.h"

#include "app/zuvinavigationcontroller.h"
#include "zuvihotviewcontroller.h"

#include <QVariantMap>

ZuviHotRegionSettingsViewController::ZuviHotRegionSettingsViewController(ZuviDefaults *defaults,
                                                                         QObject *parent)
    : ZuviViewController(QStringLiteral("分区配置"), parent), m_defaults(defaults)
{
    reloadRegionKeys();
}

QUrl ZuviHotRegionSettingsViewController::pageUrl() const
{
    return modulePageUrl(QStringLiteral("HotRegionSettingsPage.qml"));
}

QStringList ZuviHotRegionSettingsViewController::selectedRegionTitles() const
{
    QStringList titles;
    for (const QString &key : m_selectedRegionKeys)
        titles.append(ZuviHotViewController::titleForHotRegionKey(key));
    return titles;
}

QStringList ZuviHotRegionSettingsViewController::hiddenRegionTitles() const
{
    QStringList titles;
    for (const QString &key : m_hiddenRegionKeys)
        titles.append(ZuviHotViewController::titleForHotRegionKey(key));
    return titles;
}

QStringList ZuviHotRegionSettingsViewController::sectionTitles() const
{
    return {QStringLiteral("已展示"), QStringLiteral("未展示")};
}

void ZuviHotRegionSettingsViewController::setEditing(bool editing)
{
    if (m_editing == editing)
        return;
    m_editing = editing;
    emit editingChanged();
}

QString ZuviHotRegionSettingsViewController::editButtonTitle() const
{
    return m_editing ? QStringLiteral("完成") : QStringLiteral("编辑");
}

void ZuviHotRegionSettingsViewController::selectRow(int section, int row)
{
    if (m_editing)
        return;
    if (section == ShownSection && row >= 0 && row < m_selectedRegionKeys.size()) {
        if (m_selectedRegionKeys.size() <= 1) {
            // The strip would have nothing to show.
            emit alertRequested(QStringLiteral("至少保留一个分区"), QString(),
                                QStringLiteral("好"));
            return;
        }
        m_hiddenRegionKeys.append(m_selectedRegionKeys.takeAt(row));
    } else if (section == HiddenSection && row >= 0 && row < m_hiddenRegionKeys.size()) {
        m_selectedRegionKeys.append(m_hiddenRegionKeys.at(row));
    } else {
        return;
    }
    saveSelectedKeys();
    reloadRegionKeys();
}

QVariantMap ZuviHotRegionSettingsViewController::targetForMove(int proposedSection,
                                                               int proposedRow) const
{
    const int lastShownRow = static_cast<int>(m_selectedRegionKeys.size()) - 1;
    if (proposedSection != ShownSection)
        return {{"section", int(ShownSection)}, {"row", lastShownRow}};
    return {{"section", int(ShownSection)}, {"row", qBound(0, proposedRow, lastShownRow)}};
}

void ZuviHotRegionSettingsViewController::moveRow(int fromSection, int fromRow, int toSection,
                                                  int toRow)
{
    const int count = static_cast<int>(m_selectedRegionKeys.size());
    if (fromSection == ShownSection && toSection == ShownSection && fromRow >= 0 &&
        fromRow < count && toRow >= 0 && toRow < count) {
        m_selectedRegionKeys.move(fromRow, toRow);
        saveSelectedKeys();
    }
    // Anything else only redraws the table as it was.
    emit regionsChanged();
}

void ZuviHotRegionSettingsViewController::viewWillAppear()
{
    ZuviNavigationController *navigation = navigationController();
    if (navigation && navigation->isNavigationBarHidden())
        navigation->setNavigationBarHidden(false, false);
}

void ZuviHotRegionSettingsViewController::reloadRegionKeys()
{
    m_selectedRegionKeys = ZuviHotViewController::visibleHotRegionKeys(m_defaults);
    m_hiddenRegionKeys.clear();
    for (const QString &key : ZuviHotViewController::defaultHotRegionKeys()) {
        if (!m_selectedRegionKeys.contains(key))
            m_hiddenRegionKeys.append(key);
    }
    emit regionsChanged();
}

void ZuviHotRegionSettingsViewController::saveSelectedKeys()
{
    ZuviHotViewController::setVisibleHotRegionKeys(m_selectedRegionKeys, m_defaults);
}
