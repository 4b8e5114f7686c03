#include "zuvidanmakupreviewoptions.h"

#include <QCommandLineParser>
#include <QFile>
#include <QStringList>

QList<QCommandLineOption> ZuviDanmakuPreviewOptions::options()
{
    return {
        {"opacity", "Danmaku opacity, 20…100 %.", "PERCENT"},
        {"text-size", "Text size, 50…200 %.", "PERCENT"},
        {"speed", "Scrolling speed, 0.5…2.", "FACTOR"},
        {"area", "Display area: quarter, half, three-quarters or full.", "AREA"},
        {"hide", "Kinds not shown, comma separated: scrolling, top, bottom, colored.", "KINDS"},
        {"block", "A block rule: a word, or /an expression/ (repeatable).", "RULE"},
        {"block-file", "Block rules from a text file, one per line.", "FILE"},
        {"merge", "Merge identical danmaku within the merge window."},
        {"merge-window", "The merge window in seconds (default 5).", "SECONDS"},
        {"reduced-motion", "Show danmaku as still lines instead of scrolling."},
    };
}

bool ZuviDanmakuPreviewOptions::settingsFromParser(const QCommandLineParser &parser,
                                                   ZuviDanmakuSettings *settings, QString *error)
{
    ZuviDanmakuSettings s;
    if (parser.isSet("opacity"))
        s.opacityPercent = parser.value("opacity").toInt();
    if (parser.isSet("text-size"))
        s.textScalePercent = parser.value("text-size").toInt();
    if (parser.isSet("speed"))
        s.speed = parser.value("speed").toDouble();
    if (parser.isSet("area")) {
        const QStringList areas = {"quarter", "half", "three-quarters", "full"};
        const int area = int(areas.indexOf(parser.value("area")));
        if (area < 0) {
            *error = QStringLiteral("unknown area \"%1\"").arg(parser.value("area"));
            return false;
        }
        s.displayArea = area + 1;
    }
    for (const QString &kind : parser.value("hide").split(',', Qt::SkipEmptyParts)) {
        bool *shown = kind == "scrolling" ? &s.showsScrolling
                      : kind == "top"     ? &s.showsTop
                      : kind == "bottom"  ? &s.showsBottom
                      : kind == "colored" ? &s.showsColored
                                          : nullptr;
        if (!shown) {
            *error = QStringLiteral("unknown kind \"%1\"").arg(kind);
            return false;
        }
        *shown = false;
    }
    QStringList rules = parser.values("block");
    if (parser.isSet("block-file")) {
        QFile file(parser.value("block-file"));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            *error = QStringLiteral("cannot read %1").arg(file.fileName());
            return false;
        }
        rules.append(QString::fromUtf8(file.readAll()));
    }
    s.blockListText = rules.join('\n');
    s.mergesRepeats = parser.isSet("merge");
    if (parser.isSet("merge-window"))
        s.mergeWindow = parser.value("merge-window").toDouble();
    s.reducedMotion = parser.isSet("reduced-motion");
    *settings = s.clamped();
    return true;
}
