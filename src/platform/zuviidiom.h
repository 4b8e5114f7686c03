#pragma once

#include <QSize>
#include <QString>

// The device class the interface is laid out for: a tablet ("pad", the
// default, in a 1024×768 window) or a phone (320×568). Chosen at launch with
// --idiom and readable everywhere.
class ZuviIdiom
{
public:
    enum Kind { Pad, Phone };

    static Kind current();
    static void setCurrent(Kind kind);
    static bool isPad() { return current() == Pad; }

    // "pad" or "phone" (case-insensitive); false for anything else.
    static bool fromString(const QString &text, Kind *kind);
    static QString toString(Kind kind);
    static QSize defaultWindowSize(Kind kind);
};
