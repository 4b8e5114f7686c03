#include "zuviidiom.h"

#include <atomic>

namespace {
std::atomic<int> currentKind{ZuviIdiom::Pad};
}

ZuviIdiom::Kind ZuviIdiom::current()
{
    return static_cast<Kind>(currentKind.load());
}

void ZuviIdiom::setCurrent(Kind kind)
{
    currentKind.store(kind);
}

bool ZuviIdiom::fromString(const QString &text, Kind *kind)
{
    const QString lowered = text.trimmed().toLower();
    if (lowered == "pad") {
        *kind = Pad;
        return true;
    }
    if (lowered == "phone") {
        *kind = Phone;
        return true;
    }
    return false;
}

QString ZuviIdiom::toString(Kind kind)
{
    return kind == Phone ? QStringLiteral("phone") : QStringLiteral("pad");
}

QSize ZuviIdiom::defaultWindowSize(Kind kind)
{
    return kind == Phone ? QSize(320, 568) : QSize(1024, 768);
}
