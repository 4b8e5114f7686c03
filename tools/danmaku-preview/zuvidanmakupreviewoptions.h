#pragma once

#include "danmaku/zuvidanmakusettings.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>

class QCommandLineParser;

// The viewer's danmaku settings as the preview tool's options, so that each
// one can be judged on its own over the same document:
//   --opacity 50 --text-size 150 --speed 2 --area half
//   --hide top,bottom,scrolling,colored --block RULE (repeatable)
//   --block-file FILE --merge [--merge-window 5] --reduced-motion
class ZuviDanmakuPreviewOptions
{
public:
    static QList<QCommandLineOption> options();
    // The settings the parsed options ask for; false with a message for a
    // value out of place (an unknown area or kind, an unreadable file).
    static bool settingsFromParser(const QCommandLineParser &parser, ZuviDanmakuSettings *settings,
                                   QString *error);
};
