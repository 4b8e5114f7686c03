#pragma once

#include "model/zuvidanmakuitem.h"
#include "zuvidanmakublocklist.h"
#include "zuvidanmakusettings.h"

#include <QList>

// Chooses which of a video's danmaku are shown: the kinds the viewer keeps,
// minus blocked texts, with identical texts inside the merge window folded
// into their first one, which then reads "text ×N". Run once per list (on
// load, when the settings change, when the viewer sends one), so that the
// overlay's tick walks only what is shown and never judges an item itself.
class ZuviDanmakuFilter
{
public:
    explicit ZuviDanmakuFilter(const ZuviDanmakuSettings &settings = ZuviDanmakuSettings());

    // Whether apply() hands the list back unchanged.
    bool keepsEveryItem() const { return m_keepsEveryItem; }
    const ZuviDanmakuBlockList &blockList() const { return m_blockList; }

    // The items shown, in the same (time) order; merged items carry their count.
    QList<ZuviDanmakuItem> apply(const QList<ZuviDanmakuItem> &items) const;
    // Whether the item's kind is one the viewer shows.
    bool showsKind(const ZuviDanmakuItem &item) const;

    static QString mergedText(const QString &text, int count);

private:
    ZuviDanmakuSettings m_settings;
    ZuviDanmakuBlockList m_blockList;
    bool m_keepsEveryItem;
};
