#pragma once

#include <QPointF>
#include <QRgb>
#include <QSizeF>
#include <QString>

// One on-screen danmaku: what it shows, where its flight goes and its own
// animation clock. Labels are pooled by ZuviDanmakuEngine and reused for
// many flights, so everything here is reset between flights.
struct ZuviDanmakuLabel {
    enum Flight {
        Idle,      // not flying (pooled, or cleared)
        Scrolling, // right to left across the view at constant speed
        Fixed,     // centred and still: fade in, hold, fade out
    };

    // Contents, set when the label is configured for an item.
    QString text;
    qreal fontSize = 16;
    QRgb color = 0xFFFFFFFF; // 0xAARRGGBB, already made readable
    quint64 serial = 0;      // changes with every configuration; 0 = never configured

    // Frame and opacity at the start of the flight.
    QPointF origin;
    QSizeF size;
    qreal alpha = 1;

    // The flight.
    int tag = 0; // animation token of the current flight, 0 when idle
    Flight flight = Idle;
    double duration = 0;    // seconds of flight clock
    qreal targetX = 0;      // where a scrolling flight ends
    double flightStart = 0; // label-local time at which the flight began

    // The label's animation clock: local time runs with the flight clock
    // (minus beginOffset) unless frozen, when it stands at frozenLocal.
    bool frozen = false;
    double beginOffset = 0;
    double frozenLocal = 0;
};
