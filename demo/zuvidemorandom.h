#pragma once

#include <QList>
#include <QtGlobal>

// A small seeded generator (splitmix64). The standard library's
// distributions differ between implementations, so the demo content draws
// every number from here and is the same for the same seed everywhere.
class ZuviDemoRandom
{
public:
    explicit ZuviDemoRandom(quint64 seed) : m_state(seed) {}
    // A generator for one named thing (a video, a cid, a page of comments):
    // independent of how many numbers were drawn elsewhere.
    ZuviDemoRandom(quint64 seed, quint64 stream, quint64 item = 0)
        : m_state(seed ^ (stream * 0x9E3779B97F4A7C15ULL) ^ (item * 0xC2B2AE3D27D4EB4FULL))
    {
        next();
    }

    quint64 next()
    {
        quint64 z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    // A number in [0, bound).
    int below(int bound) { return bound <= 0 ? 0 : int(next() % quint64(bound)); }
    // A number in [low, high].
    qint64 between(qint64 low, qint64 high)
    {
        return high <= low ? low : low + qint64(next() % quint64(high - low + 1));
    }
    // A fraction in [0, 1).
    double unit() { return double(next() >> 11) / double(1ULL << 53); }
    bool chance(double probability) { return unit() < probability; }
    template <typename T> const T &pick(const QList<T> &list)
    {
        return list.at(below(int(list.size())));
    }

private:
    quint64 m_state;
};
