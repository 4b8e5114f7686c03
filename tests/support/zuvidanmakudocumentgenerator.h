#pragma once

#include "model/zuvidanmakuitem.h"

#include <QByteArray>
#include <QList>

// Writes danmaku documents that look like the service's: about 89 % scrolling
// comments, 5 % top, 5 % bottom and the rest modes 6–8; sizes 25, 18 and 36;
// mostly white with a palette and rare black; 2–40 characters of CJK, ASCII
// and emoji with some entities; times clustered in bursts over the video;
// document order by posting, not by time. The same seed always gives the same
// bytes, so benchmarks and tests read identical documents on every machine.
//
// Each comment is also returned as the record the parser should make of it.
class ZuviDanmakuDocumentGenerator
{
public:
    explicit ZuviDanmakuDocumentGenerator(quint64 seed = 0x5EED2024u);

    // A document of exactly `count` comments.
    QByteArray document(int count, QList<ZuviDanmakuItem> *expected = nullptr);
    // Comments are added until the document holds at least `bytes` bytes.
    QByteArray documentOfSize(qsizetype bytes, QList<ZuviDanmakuItem> *expected = nullptr);

private:
    QByteArray generate(int count, qsizetype bytes, QList<ZuviDanmakuItem> *expected);
    void beginDocument(QByteArray &xml, int plannedCount);
    void appendComment(QByteArray &xml, QList<ZuviDanmakuItem> *expected);
    void appendText(QByteArray &xml, QString *decoded);
    double nextTime();
    quint64 next();
    double uniform(); // [0, 1)
    int below(int bound);

    quint64 m_state;
    double m_duration = 600;
    QList<double> m_burstCentres;
    qint64 m_sendTime = 1700000000;
    qint64 m_nextID = 1300000000000000000;
};
