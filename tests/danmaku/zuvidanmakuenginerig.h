#pragma once

#include "danmaku/zuvidanmakuengine.h"
#include "platform/zuvivirtualscheduler.h"

#include <QSet>
#include <QStringList>

#include <deque>

// An engine on virtual clocks, as the danmaku suites drive it: playback time
// comes from the ticks, flight time from a ZuviVirtualScheduler, lanes from a
// scripted random source, and text is measured as 10 points per character,
// as high as its font size.
struct ZuviDanmakuEngineRig {
    explicit ZuviDanmakuEngineRig(ZuviIdiom::Kind idiom = ZuviIdiom::Pad,
                                  QSizeF size = QSizeF(1024, 768))
        : engine(
              idiom, [this] { return clock.now(); },
              [this](quint32 bound) {
                  bounds.append(bound);
                  const quint32 value = script.empty() ? 0 : script.front();
                  if (!script.empty())
                      script.pop_front();
                  return value < bound ? value : bound - 1;
              },
              [](const QString &text, qreal fontSize) {
                  return QSizeF(10.0 * text.size(), fontSize);
              })
    {
        engine.setViewSize(size);
    }
    explicit ZuviDanmakuEngineRig(QSizeF size) : ZuviDanmakuEngineRig(ZuviIdiom::Pad, size) {}

    // Plays like the video screen, a tick every 0.12 s of wall time with
    // playback moving along and finished flights taken down after it, and
    // returns every launch as "text@x,y Ds Npt".
    QStringList play(double from, double seconds)
    {
        QStringList launches;
        quint64 newest = 0;
        for (double t = from; t < from + seconds - 1e-9; t += 0.12) {
            engine.tickAtPlaybackTime(t, true);
            for (int i = 0; i < engine.visibleLabelCount(); ++i) {
                const ZuviDanmakuLabel &label = engine.visibleLabel(i);
                if (label.serial <= newest)
                    continue;
                newest = label.serial;
                launches.append(QStringLiteral("%1@%2,%3 %4s %5pt")
                                    .arg(label.text)
                                    .arg(label.origin.x())
                                    .arg(label.origin.y())
                                    .arg(label.duration)
                                    .arg(label.fontSize));
            }
            clock.advance(0.12);
            engine.completeFinishedFlights();
        }
        return launches;
    }

    QSet<QString> visibleTexts() const
    {
        QSet<QString> texts;
        for (int i = 0; i < engine.visibleLabelCount(); ++i)
            texts.insert(engine.visibleLabel(i).text);
        return texts;
    }

    ZuviVirtualScheduler clock;
    std::deque<quint32> script; // random values handed out in order, then 0
    QList<quint32> bounds;      // every bound the engine asked for
    ZuviDanmakuEngine engine;
};
