#pragma once

#include <QString>

class ZuviDefaults;

// How the viewer wants danmaku shown: their look (opacity, text size, speed,
// the part of the picture they may use, motion) and which of them show at
// all (kinds, a block list, merged repeats). Every value at its default
// shows danmaku exactly as the overlay always has. Kept in the defaults
// store; whoever changes it there posts didChangeNotification.
struct ZuviDanmakuSettings {
    // The share of the lanes danmaku may use, in quarters from the top.
    enum DisplayArea { QuarterArea = 1, HalfArea = 2, ThreeQuartersArea = 3, FullArea = 4 };

    static constexpr int minimumOpacityPercent = 20;
    static constexpr int minimumTextScalePercent = 50;
    static constexpr int maximumTextScalePercent = 200;
    static constexpr double minimumSpeed = 0.5;
    static constexpr double maximumSpeed = 2.0;
    static constexpr double minimumMergeWindow = 1.0;
    static constexpr double maximumMergeWindow = 30.0;

    int opacityPercent = 100;   // 20…100
    int textScalePercent = 100; // 50…200, applied after the record's own size clamp
    double speed = 1.0;         // 0.5…2: scrolling flights take 1/speed as long
    int displayArea = FullArea;
    bool showsScrolling = true;
    bool showsTop = true;
    bool showsBottom = true;
    bool showsColored = true; // anything not plain white
    QString blockListText;    // one rule per line, see ZuviDanmakuBlockList
    bool mergesRepeats = false;
    double mergeWindow = 5.0; // seconds within which identical texts merge
    bool reducedMotion = false;

    // Every value brought into its range (out-of-range stored values included).
    ZuviDanmakuSettings clamped() const;
    // Whether the list shown equals the list loaded: all kinds, no rules, no merging.
    bool keepsEveryItem() const;
    // Whether two settings choose the same items (the look aside).
    bool filtersLike(const ZuviDanmakuSettings &other) const;

    qreal opacity() const { return opacityPercent / 100.0; }
    qreal textScale() const { return textScalePercent / 100.0; }

    static ZuviDanmakuSettings fromDefaults(const ZuviDefaults &defaults);
    void saveToDefaults(ZuviDefaults &defaults) const;

    bool operator==(const ZuviDanmakuSettings &other) const;
    bool operator!=(const ZuviDanmakuSettings &other) const { return !(*this == other); }

    static const char *const didChangeNotification;
    static const char *const opacityKey;
    static const char *const textScaleKey;
    static const char *const speedKey;
    static const char *const displayAreaKey;
    static const char *const showsScrollingKey;
    static const char *const showsTopKey;
    static const char *const showsBottomKey;
    static const char *const showsColoredKey;
    static const char *const blockListKey;
    static const char *const mergesRepeatsKey;
    static const char *const mergeWindowKey;
    static const char *const reducedMotionKey;
};
