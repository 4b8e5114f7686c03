#include "zuvidemocontent.h"
#include "zuvidemofailureswitches.h"

#include <QSet>
#include <QXmlStreamReader>
#include <QtTest>

// The generated content, spread the way the client's screens and parsers
// need it (the same seed giving the same answers is the service suite's).
class TestZuviDemoContent : public QObject
{
    Q_OBJECT

private slots:
    void contentCoversEveryCase();
    void danmakuDocumentsParseAndStayInRange();
    void searchHighlightsAndEscapes_data();
    void searchHighlightsAndEscapes();
    void failureSwitchTexts_data();
    void failureSwitchTexts();
    void limitedSwitchRunsOut();
};

void TestZuviDemoContent::contentCoversEveryCase()
{
    const ZuviDemoContent content(1);
    QCOMPARE(content.videos().size(), ZuviDemoContent::kVideoCount);
    QSet<QString> bvids;
    QSet<int> regions;
    QSet<qint64> cids;
    bool zero = false, plain = false, tenThousands = false, hundredMillions = false;
    bool multiPart = false, untitledPart = false;
    QSet<int> playKinds;
    int densest = 0;
    for (const ZuviDemoVideo &video : content.videos()) {
        QVERIFY2(QRegularExpression("^BV[0-9A-Za-z]+$").match(video.bvid).hasMatch(),
                 qPrintable(video.bvid));
        bvids.insert(video.bvid);
        regions.insert(video.rid);
        zero |= video.view == 0;
        plain |= video.view > 0 && video.view < 10000;
        tenThousands |= video.view >= 10000 && video.view < 100000000;
        hundredMillions |= video.view >= 100000000;
        multiPart |= video.pages.size() > 1;
        for (const ZuviDemoPage &page : video.pages) {
            QVERIFY(page.cid > 0);
            cids.insert(page.cid);
            untitledPart |= page.part.isEmpty();
        }
        playKinds.insert(int(video.playKind));
        densest = qMax(densest, video.danmakuDocumentSize);
        QCOMPARE(content.videoForBVID(video.bvid), &video);
        QCOMPARE(content.videoForAID(video.aid), &video);
    }
    QCOMPARE(bvids.size(), ZuviDemoContent::kVideoCount);
    QCOMPARE(regions.size(), ZuviDemoContent::regions().size());
    QVERIFY(zero && plain && tenThousands && hundredMillions);
    QVERIFY(multiPart && untitledPart);
    QCOMPARE(playKinds.size(), 3);
    QVERIFY2(densest >= 7000 && densest <= 8000, qPrintable(QString::number(densest)));
    // Rankings hold only their region, most played first.
    const QList<int> music = content.ranking(1003, 100);
    QVERIFY(!music.isEmpty());
    for (int i = 0; i < music.size(); ++i) {
        QCOMPARE(content.videos().at(music.at(i)).rid, 1003);
        if (i > 0)
            QVERIFY(content.videos().at(music.at(i - 1)).view +
                        content.videos().at(music.at(i - 1)).like * 3 >=
                    content.videos().at(music.at(i)).view +
                        content.videos().at(music.at(i)).like * 3);
    }
    QCOMPARE(content.ranking(0, 100).size(), 100);
}

void TestZuviDemoContent::danmakuDocumentsParseAndStayInRange()
{
    const ZuviDemoContent content(7);
    const ZuviDemoVideo *dense = nullptr;
    for (const ZuviDemoVideo &video : content.videos()) {
        if (!dense || video.danmakuDocumentSize > dense->danmakuDocumentSize)
            dense = &video;
    }
    const qint64 cid = dense->pages.first().cid;
    const QList<ZuviDemoDanmaku> items = content.danmaku(cid);
    QCOMPARE(items.size(), dense->danmakuDocumentSize);
    QXmlStreamReader reader(ZuviDemoContent::danmakuDocument(cid, items));
    int count = 0;
    QSet<int> modes;
    QSet<QString> colours;
    QSet<QString> sizes;
    const double length = ZuviDemoContent::clips().at(dense->clip).seconds;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement ||
            reader.name() != QLatin1String("d"))
            continue;
        const QStringList p = reader.attributes().value("p").toString().split(',');
        QCOMPARE(p.size(), 8);
        const double time = p.at(0).toDouble();
        QVERIFY(time >= 0 && time <= length);
        modes.insert(p.at(1).toInt());
        sizes.insert(p.at(2));
        colours.insert(p.at(3));
        QVERIFY(p.at(3).toUInt() <= 0xFFFFFF);
        QVERIFY(!reader.readElementText().isEmpty());
        ++count;
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(count, items.size());
    QCOMPARE(modes, (QSet<int>{1, 4, 5, 6, 7, 8}));
    QVERIFY(sizes.size() >= 3);
    QVERIFY(colours.size() >= 5);
}

void TestZuviDemoContent::searchHighlightsAndEscapes_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one match") << "Qt 编程入门"
                               << "编程"
                               << "Qt <em class=\"keyword\">编程</em>入门";
    QTest::newRow("case kept")
        << "Linux 与 linux"
        << "LINUX"
        << "<em class=\"keyword\">Linux</em> 与 <em class=\"keyword\">linux</em>";
    QTest::newRow("text escaped") << "A & <B>"
                                  << "A"
                                  << "<em class=\"keyword\">A</em> &amp; &lt;B&gt;";
}

void TestZuviDemoContent::searchHighlightsAndEscapes()
{
    QFETCH(QString, title);
    QFETCH(QString, keyword);
    QFETCH(QString, expected);
    QCOMPARE(ZuviDemoContent::highlighted(title, keyword), expected);
}

void TestZuviDemoContent::failureSwitchTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("number"); // delay or code
    QTest::addColumn<int>("times");
    QTest::newRow("slow") << "/x/a=slow:2500" << true << "/x/a" << int(ZuviDemoFailure::Slow)
                          << 2500 << -1;
    QTest::newRow("code") << "/x/b=code:-412:被拦截@2" << true << "/x/b"
                          << int(ZuviDemoFailure::ServiceError) << -412 << 2;
    QTest::newRow("html") << "/img/*=html@1" << true << "/img/*" << int(ZuviDemoFailure::HtmlError)
                          << 0 << 1;
    QTest::newRow("code zero") << "/x/e=code:0" << false << "" << 0 << 0 << 0;
    QTest::newRow("bad times") << "/x/e=drop@0" << false << "" << 0 << 0 << 0;
}

void TestZuviDemoContent::failureSwitchTexts()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QString path;
    std::optional<ZuviDemoFailure> failure;
    QString errorText;
    QCOMPARE(ZuviDemoFailureSwitches::parse(text, &path, &failure, &errorText), valid);
    if (!valid) {
        QVERIFY(!errorText.isEmpty());
        return;
    }
    QFETCH(int, mode);
    QFETCH(int, number);
    QFETCH(int, times);
    QTEST(path, "path");
    QVERIFY(failure.has_value());
    QCOMPARE(int(failure->mode), mode);
    QCOMPARE(failure->remaining, times);
    if (failure->mode == ZuviDemoFailure::Slow)
        QCOMPARE(failure->delayMs, number);
    if (failure->mode == ZuviDemoFailure::ServiceError) {
        QCOMPARE(failure->code, number);
        QCOMPARE(failure->message, QStringLiteral("被拦截"));
    }
}

void TestZuviDemoContent::limitedSwitchRunsOut()
{
    ZuviDemoFailureSwitches switches;
    ZuviDemoFailure failure;
    failure.mode = ZuviDemoFailure::Drop;
    failure.remaining = 2;
    switches.set("/x/v2/reply", failure);
    ZuviDemoFailure everything;
    everything.mode = ZuviDemoFailure::HtmlError;
    switches.set("/x/*", everything);
    ZuviDemoFailure legacy;
    switches.set("/{cid}.xml", legacy);
    // Exact paths beat prefixes; a limited switch goes after its last use.
    QCOMPARE(switches.take("/x/v2/reply")->mode, ZuviDemoFailure::Drop);
    QCOMPARE(switches.take("/x/v2/reply")->mode, ZuviDemoFailure::Drop);
    QCOMPARE(switches.take("/x/v2/reply")->mode, ZuviDemoFailure::HtmlError);
    QCOMPARE(switches.take("/x/anything")->mode, ZuviDemoFailure::HtmlError);
    QCOMPARE(switches.take("/123456.xml")->mode, ZuviDemoFailure::ServiceError);
    QVERIFY(!switches.take("/config/remote_config.json"));
    switches.clearAll();
    QVERIFY(!switches.take("/x/anything"));
}

QTEST_GUILESS_MAIN(TestZuviDemoContent)
#include "tst_zuvidemocontent.moc"
