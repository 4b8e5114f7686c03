#include "zuvidanmakufilter.h"

#include <QHash>

#include <vector>

ZuviDanmakuFilter::ZuviDanmakuFilter(const ZuviDanmakuSettings &settings)
    : m_settings(settings.clamped()), m_blockList(m_settings.blockListText),
      m_keepsEveryItem(m_settings.keepsEveryItem() && m_blockList.isEmpty())
{
}

QString ZuviDanmakuFilter::mergedText(const QString &text, int count)
{
    return QStringLiteral("%1 ×%2").arg(text).arg(count);
}

bool ZuviDanmakuFilter::showsKind(const ZuviDanmakuItem &item) const
{
    if (!m_settings.showsColored && (item.colorRGB & 0xFFFFFFu) != 0xFFFFFFu)
        return false;
    switch (item.mode) {
    case 5:
        return m_settings.showsTop;
    case 4:
        return m_settings.showsBottom;
    case 7:
    case 8:
        return true; // never drawn anyway; the overlay counts them as such
    default:
        return m_settings.showsScrolling;
    }
}

QList<ZuviDanmakuItem> ZuviDanmakuFilter::apply(const QList<ZuviDanmakuItem> &items) const
{
    if (m_keepsEveryItem)
        return items; // shared, not copied
    QList<ZuviDanmakuItem> shown;
    shown.reserve(items.size());
    // Danmaku repeat a lot ("2333", "哈哈哈"): each distinct text is judged
    // against the block list once per list.
    QHash<QString, bool> blockedTexts;
    // Per trimmed text, the index in `shown` of its latest merge run.
    QHash<QString, qsizetype> runs;
    std::vector<int> counts;
    const bool merges = m_settings.mergesRepeats;
    const double window = m_settings.mergeWindow;
    for (const ZuviDanmakuItem &item : items) {
        if (!showsKind(item))
            continue;
        if (!m_blockList.isEmpty()) {
            auto verdict = blockedTexts.constFind(item.text);
            if (verdict == blockedTexts.constEnd())
                verdict = blockedTexts.insert(item.text, m_blockList.blocks(item.text));
            if (*verdict)
                continue;
        }
        if (merges) {
            const QString key = item.text.trimmed();
            auto run = runs.find(key);
            if (run != runs.end() && item.time - shown.at(*run).time <= window) {
                ++counts[size_t(*run)];
                continue;
            }
            runs.insert(key, shown.size());
            counts.push_back(1);
        }
        shown.append(item);
    }
    for (size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] > 1) {
            ZuviDanmakuItem &merged = shown[qsizetype(i)];
            merged.text = mergedText(merged.text, counts[i]);
        }
    }
    return shown;
}
