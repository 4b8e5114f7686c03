#include "zuvidanmakusettings.h"

#include "platform/zuvidefaults.h"

#include <algorithm>

const char *const ZuviDanmakuSettings::didChangeNotification =
    "ZuviDanmakuSettingsDidChangeNotification";
const char *const ZuviDanmakuSettings::opacityKey = "ZuviDanmakuOpacity";
const char *const ZuviDanmakuSettings::textScaleKey = "ZuviDanmakuTextScale";
const char *const ZuviDanmakuSettings::speedKey = "ZuviDanmakuSpeed";
const char *const ZuviDanmakuSettings::displayAreaKey = "ZuviDanmakuDisplayArea";
const char *const ZuviDanmakuSettings::showsScrollingKey = "ZuviDanmakuShowsScrolling";
const char *const ZuviDanmakuSettings::showsTopKey = "ZuviDanmakuShowsTop";
const char *const ZuviDanmakuSettings::showsBottomKey = "ZuviDanmakuShowsBottom";
const char *const ZuviDanmakuSettings::showsColoredKey = "ZuviDanmakuShowsColored";
const char *const ZuviDanmakuSettings::blockListKey = "ZuviDanmakuBlockList";
const char *const ZuviDanmakuSettings::mergesRepeatsKey = "ZuviDanmakuMergesRepeats";
const char *const ZuviDanmakuSettings::mergeWindowKey = "ZuviDanmakuMergeWindow";
const char *const ZuviDanmakuSettings::reducedMotionKey = "ZuviDanmakuReducedMotion";

ZuviDanmakuSettings ZuviDanmakuSettings::clamped() const
{
    ZuviDanmakuSettings s = *this;
    s.opacityPercent = std::clamp(opacityPercent, minimumOpacityPercent, 100);
    s.textScalePercent =
        std::clamp(textScalePercent, minimumTextScalePercent, maximumTextScalePercent);
    // NaN compares false everywhere: it falls back to the default instead.
    s.speed = speed == speed ? std::clamp(speed, minimumSpeed, maximumSpeed) : 1.0;
    s.displayArea = std::clamp(displayArea, int(QuarterArea), int(FullArea));
    s.mergeWindow = mergeWindow == mergeWindow
                        ? std::clamp(mergeWindow, minimumMergeWindow, maximumMergeWindow)
                        : 5.0;
    return s;
}

bool ZuviDanmakuSettings::keepsEveryItem() const
{
    return showsScrolling && showsTop && showsBottom && showsColored && !mergesRepeats &&
           blockListText.trimmed().isEmpty();
}

bool ZuviDanmakuSettings::filtersLike(const ZuviDanmakuSettings &o) const
{
    return showsScrolling == o.showsScrolling && showsTop == o.showsTop &&
           showsBottom == o.showsBottom && showsColored == o.showsColored &&
           blockListText == o.blockListText && mergesRepeats == o.mergesRepeats &&
           (!mergesRepeats || mergeWindow == o.mergeWindow);
}

bool ZuviDanmakuSettings::operator==(const ZuviDanmakuSettings &o) const
{
    return filtersLike(o) && opacityPercent == o.opacityPercent &&
           textScalePercent == o.textScalePercent && speed == o.speed &&
           displayArea == o.displayArea && mergeWindow == o.mergeWindow &&
           reducedMotion == o.reducedMotion;
}

namespace {

// A missing key keeps the default; a stored one is read whatever its form.
int storedInteger(const ZuviDefaults &defaults, const char *key, int fallback)
{
    return defaults.containsKey(key) ? int(defaults.integerForKey(key)) : fallback;
}

double storedDouble(const ZuviDefaults &defaults, const char *key, double fallback)
{
    return defaults.containsKey(key) ? defaults.doubleForKey(key) : fallback;
}

bool storedBool(const ZuviDefaults &defaults, const char *key, bool fallback)
{
    return defaults.containsKey(key) ? defaults.boolForKey(key) : fallback;
}

} // namespace

ZuviDanmakuSettings ZuviDanmakuSettings::fromDefaults(const ZuviDefaults &defaults)
{
    ZuviDanmakuSettings s;
    s.opacityPercent = storedInteger(defaults, opacityKey, s.opacityPercent);
    s.textScalePercent = storedInteger(defaults, textScaleKey, s.textScalePercent);
    s.speed = storedDouble(defaults, speedKey, s.speed);
    s.displayArea = storedInteger(defaults, displayAreaKey, s.displayArea);
    s.showsScrolling = storedBool(defaults, showsScrollingKey, s.showsScrolling);
    s.showsTop = storedBool(defaults, showsTopKey, s.showsTop);
    s.showsBottom = storedBool(defaults, showsBottomKey, s.showsBottom);
    s.showsColored = storedBool(defaults, showsColoredKey, s.showsColored);
    s.blockListText = defaults.stringForKey(blockListKey);
    s.mergesRepeats = storedBool(defaults, mergesRepeatsKey, s.mergesRepeats);
    s.mergeWindow = storedDouble(defaults, mergeWindowKey, s.mergeWindow);
    s.reducedMotion = storedBool(defaults, reducedMotionKey, s.reducedMotion);
    return s.clamped();
}

void ZuviDanmakuSettings::saveToDefaults(ZuviDefaults &defaults) const
{
    const ZuviDanmakuSettings s = clamped();
    defaults.setInteger(s.opacityPercent, opacityKey);
    defaults.setInteger(s.textScalePercent, textScaleKey);
    defaults.setObject(s.speed, speedKey);
    defaults.setInteger(s.displayArea, displayAreaKey);
    defaults.setBool(s.showsScrolling, showsScrollingKey);
    defaults.setBool(s.showsTop, showsTopKey);
    defaults.setBool(s.showsBottom, showsBottomKey);
    defaults.setBool(s.showsColored, showsColoredKey);
    defaults.setString(s.blockListText, blockListKey);
    defaults.setBool(s.mergesRepeats, mergesRepeatsKey);
    defaults.setObject(s.mergeWindow, mergeWindowKey);
    defaults.setBool(s.reducedMotion, reducedMotionKey);
    defaults.synchronize();
}
