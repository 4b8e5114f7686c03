#include "../net/zuviclienttestfixture.h"
#include "player/zuvivideosidecontent.h"
#include "zuviplayertestscreen.h"

#include <QAbstractItemModelTester>

using namespace ZuviPlayerTest;

// The related list and the comment paging of the video screen, alone, on
// the loopback server.
class TestVideoSideContent : public QObject
{
    Q_OBJECT

private slots:
    void commentPagesRunUntilAShortPage();
    void repeatedCommentsAreDroppedButEmptyOnesKept();
    void failedLaterPageKeepsTheListForARetry();
    void answerForAnEarlierVideoIsDropped();
    void relatedStatusTexts_data();
    void relatedStatusTexts();
};

void TestVideoSideContent::commentPagesRunUntilAShortPage()
{
    ZuviClientTestFixture f;
    f.server.setAnswerSequence("*", kCommentsPath,
                               {ZuviScriptedAnswer::json(commentsJson(0, 20)),
                                ZuviScriptedAnswer::json(commentsJson(20, 19))});
    ZuviVideoSideContent side(f.client.get());
    side.resetForVideo(42, QStringLiteral("BV1test"));
    // Nothing to page from before the first page is in.
    side.loadNextCommentsIfNeeded();
    QCOMPARE(f.server.requestCount(kCommentsPath), 0);

    side.loadCommentsReset(true);
    QCOMPARE(side.commentsStatusText(), QStringLiteral("评论加载中"));
    // A second reset while the first runs is not sent.
    side.loadCommentsReset(true);
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(side.commentItems().size(), 20);
    QVERIFY(side.hasMoreComments());
    QVERIFY(side.commentsStatusText().isEmpty());

    side.loadNextCommentsIfNeeded();
    QCOMPARE(side.commentsStatusText(), QStringLiteral("正在加载更多评论"));
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(side.commentItems().size(), 39);
    QCOMPARE(side.commentsPage(), 2);
    QVERIFY(!side.hasMoreComments());
    side.loadNextCommentsIfNeeded();
    QCOMPARE(f.server.requestCount(kCommentsPath), 2);
    const QList<ZuviRecordedRequest> sent = f.server.requests(kCommentsPath);
    QCOMPARE(sent.at(0).queryValue("pn"), QStringLiteral("1"));
    QCOMPARE(sent.at(1).queryValue("pn"), QStringLiteral("2"));
    QCOMPARE(sent.at(1).queryValue("ps"), QStringLiteral("20"));
    QCOMPARE(sent.at(1).queryValue("oid"), QStringLiteral("42"));
}

void TestVideoSideContent::repeatedCommentsAreDroppedButEmptyOnesKept()
{
    ZuviClientTestFixture f;
    // The second page starts with the last two of the first.
    f.server.setAnswerSequence("*", kCommentsPath,
                               {ZuviScriptedAnswer::json(commentsJson(0, 20)),
                                ZuviScriptedAnswer::json(commentsJson(18, 5))});
    ZuviVideoSideContent side(f.client.get());
    side.resetForVideo(42, QStringLiteral("BV1test"));
    side.loadCommentsReset(true);
    ZUVI_WAIT(side.commentItems().size() == 20);
    side.loadNextCommentsIfNeeded();
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(side.commentItems().size(), 23);
    QStringList messages;
    for (const ZuviCommentItem &item : side.commentItems())
        messages << item.message;
    QCOMPARE(messages.count(QStringLiteral("评论19")), 1);
    QCOMPARE(messages.last(), QStringLiteral("评论22"));

    // Same author, time and message is the same reply; a reply without any
    // of the three cannot be told from another and is kept each time.
    ZuviCommentItem repeated = side.commentItems().first();
    ZuviCommentItem blank;
    blank.likeCountText = QStringLiteral("3");
    const QList<ZuviCommentItem> merged =
        side.commentsByAppendingComments({repeated, blank, blank});
    QCOMPARE(merged.size(), 25);
    QCOMPARE(ZuviVideoSideContent::identityForComment(repeated),
             QStringLiteral("用户0|%1|评论0").arg(repeated.timeText));
    QVERIFY(ZuviVideoSideContent::identityForComment(std::nullopt).isEmpty());
    QCOMPARE(side.commentsByAppendingComments({}).size(), 23);
}

void TestVideoSideContent::failedLaterPageKeepsTheListForARetry()
{
    ZuviClientTestFixture f;
    f.server.setAnswerSequence(
        "*", kCommentsPath,
        {ZuviScriptedAnswer::json(commentsJson(0, 20)),
         ZuviScriptedAnswer::json(zuviJson({{"code", -404}, {"message", "啥都木有"}})),
         ZuviScriptedAnswer::json(zuviJson({{"code", -404}, {"message", "啥都木有"}})),
         ZuviScriptedAnswer::json(commentsJson(20, 3))});
    ZuviVideoSideContent side(f.client.get());
    side.resetForVideo(42, QStringLiteral("BV1test"));
    side.loadCommentsReset(true);
    ZUVI_WAIT(side.commentItems().size() == 20);
    side.loadNextCommentsIfNeeded();
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(side.commentItems().size(), 20);
    QVERIFY(side.hasMoreComments());
    QVERIFY(!side.commentsStatusText().isEmpty());
    QVERIFY(side.showsCommentStatusRow());
    QVERIFY(side.commentsFailed());
    // The next scroll to the end asks for the same page again; it fails
    // once more, and a tap on the status row asks for it a third time.
    side.loadNextCommentsIfNeeded();
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(f.server.requests(kCommentsPath).last().queryValue("pn"), QStringLiteral("2"));
    QCOMPARE(side.commentItems().size(), 20);
    QVERIFY(side.commentsFailed());
    side.statusRowTapped(true);
    ZUVI_WAIT(!side.isLoadingComments());
    QCOMPARE(side.commentItems().size(), 23);
    QVERIFY(!side.commentsFailed());
    const QList<ZuviRecordedRequest> sent = f.server.requests(kCommentsPath);
    QCOMPARE(sent.size(), 4);
    QCOMPARE(sent.last().queryValue("pn"), QStringLiteral("2"));
    // Without a failure the row is only a label.
    side.statusRowTapped(true);
    side.statusRowTapped(false);
    QVERIFY(!side.isLoadingComments());
    QVERIFY(!side.isLoadingRelated());
}

void TestVideoSideContent::answerForAnEarlierVideoIsDropped()
{
    ZuviClientTestFixture f;
    ZuviScriptedAnswer slow = ZuviScriptedAnswer::json(commentsJson(0, 20));
    slow.delayMs = 200;
    f.server.setAnswer("*", kCommentsPath, slow);
    f.answerJson(kRelatedPath, relatedJson(3));
    ZuviVideoSideContent side(f.client.get());
    side.resetForVideo(42, QStringLiteral("BV1test"));
    side.loadCommentsReset(true);
    side.loadRelatedVideos();
    side.resetForVideo(43, QStringLiteral("BV1next"));
    ZUVI_WAIT(f.server.requestCount(kCommentsPath) == 1 &&
              f.server.requestCount(kRelatedPath) == 1);
    // Wait past both answers.
    bool later = false;
    ZuviScriptedAnswer sentinel = ZuviScriptedAnswer::json("{}");
    sentinel.delayMs = 400;
    f.server.setAnswer("*", "/sentinel", sentinel);
    f.client->send(f.client->requestWithURLString(f.server.urlString("/sentinel"), {}),
                   [&](const ZuviHTTPResponse &, const ZuviError &) { later = true; });
    ZUVI_WAIT(later);
    QCoreApplication::processEvents();
    QVERIFY(side.commentItems().isEmpty());
    QVERIFY(side.relatedVideos().isEmpty());
    QCOMPARE(side.commentsStatusText(), QStringLiteral("评论加载中"));
}

void TestVideoSideContent::relatedStatusTexts_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("status");
    QTest::newRow("three") << relatedJson(3) << 3 << "";
    QTest::newRow("none") << relatedJson(0) << 0 << "暂无相关推荐";
}

void TestVideoSideContent::relatedStatusTexts()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, count);
    QFETCH(QString, status);
    ZuviClientTestFixture f;
    f.answerJson(kRelatedPath, answer);
    ZuviVideoSideContent side(f.client.get());
    QAbstractItemModelTester tester(side.relatedModel());
    side.resetForVideo(42, QStringLiteral("BV1test"));
    side.loadRelatedVideos();
    QVERIFY(side.isLoadingRelated());
    QCOMPARE(side.relatedStatusText(), QStringLiteral("相关推荐加载中"));
    ZUVI_WAIT(!side.isLoadingRelated());
    QCOMPARE(side.relatedVideos().size(), count);
    QCOMPARE(side.relatedModel()->rowCount(), count);
    QCOMPARE(side.relatedStatusText(), status);
    QCOMPARE(side.firstRelatedVideo().has_value(), count > 0);
    QCOMPARE(f.server.requests(kRelatedPath).first().queryValue("bvid"), QStringLiteral("BV1test"));
}

QTEST_MAIN(TestVideoSideContent)
#include "tst_zuvivideosidecontent.moc"
