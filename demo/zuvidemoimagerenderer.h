#pragma once

#include <QByteArray>
#include <QCache>
#include <QImage>
#include <QSize>
#include <QString>

// Draws the demo service's pictures: video covers, avatars and feed or
// message pictures, each a pattern of its own derived from its key, encoded
// as JPEG at whatever size and quality the address asks for. Pictures are
// drawn without text so that no font is needed. Encoded pictures are kept
// in a bounded cache, since lists ask for the same covers again and again.
class ZuviDemoImageRenderer
{
public:
    enum Kind { Cover, Face, Picture };

    static constexpr int kMaxSide = 2048;

    explicit ZuviDemoImageRenderer(quint64 seed);

    // The natural size of a kind when the address asks for none.
    static QSize naturalSize(Kind kind);
    // JPEG bytes; the size is clamped to 1…kMaxSide, the quality to 1…100.
    QByteArray jpeg(Kind kind, const QString &key, QSize size, int quality);

private:
    QImage draw(Kind kind, const QString &key, QSize size) const;

    quint64 m_seed;
    QCache<QString, QByteArray> m_cache;
};
