#include "../net/zuviclienttestfixture.h"
#include "player/zuvivideoactions.h"

#include <QSignalSpy>

// The video screen's actions, alone, on the loopback server: the one-at-a-
// time rule, the text rule, the status line and the dialogs. A refused
// action's status line and dialog, signed out, are video-screen-e2e.sh's.
namespace {
const QString kSignedIn = "DedeUserID=42; DedeUserID__ckMd5=m; SESSDATA=s; zuvi_jct=tok; "
                          "buvid3=b3; buvid4=b4; buvid_fp=b3; b_nut=1";
const QString kWatchLaterPath = QStringLiteral("/x/v2/history/toview/add");
const QString kCommentPath = QStringLiteral("/x/v2/reply/add");
const QString kDanmakuPostPath = QStringLiteral("/x/v2/dm/post");

QByteArray ok()
{
    return zuviJson({{"code", 0}, {"message", ""}});
}
} // namespace

class TestVideoActions : public QObject
{
    Q_OBJECT

private slots:
    void beforeTheDetailEveryButtonExplains();
    void oneActionAtATimeWithItsStatus();
    void blankTextIsRefusedUnsent_data();
    void blankTextIsRefusedUnsent();
    void danmakuGoesOutAtTheMomentOfSending();
    void inputDialogsByTag();
};

void TestVideoActions::beforeTheDetailEveryButtonExplains()
{
    ZuviClientTestFixture f;
    ZuviVideoActions actions(f.client.get());
    QSignalSpy results(&actions, &ZuviVideoActions::resultRequested);
    QCOMPARE(actions.statusText(), QStringLiteral("登录后可收藏、稍后再看、评论和发弹幕"));
    actions.videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton);
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.at(0).at(0).toString(), QStringLiteral("互动"));
    QCOMPARE(results.at(0).at(1).toString(), QStringLiteral("视频信息还没有加载完成"));
    QCOMPARE(f.server.requestCount(), 0);
}

void TestVideoActions::oneActionAtATimeWithItsStatus()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kSignedIn);
    ZuviScriptedAnswer slow = ZuviScriptedAnswer::json(ok());
    slow.delayMs = 150;
    f.server.setAnswer("*", kWatchLaterPath, slow);
    ZuviVideoActions actions(f.client.get());
    actions.setTarget(ZuviVideoActions::Target{5, QStringLiteral("BV1x"), 6});
    actions.videoInteractionButtonTapped(ZuviVideoActions::WatchLaterButton);
    QVERIFY(actions.isInProgress());
    QCOMPARE(actions.statusText(), QStringLiteral("稍后再看中..."));
    // Taps while it runs are ignored.
    actions.videoInteractionButtonTapped(ZuviVideoActions::WatchLaterButton);
    actions.videoInteractionButtonTapped(ZuviVideoActions::FavoriteButton);
    ZUVI_WAIT(!actions.isInProgress());
    QVERIFY(actions.isWatchLater());
    QVERIFY(!actions.isFavorited());
    QVERIFY(actions.statusText().isEmpty());
    QCOMPARE(f.server.requestCount(kWatchLaterPath), 1);
    QCOMPARE(f.server.requestCount("/x/v3/fav/folder/created/list-all"), 0);
    // Another video starts with nothing done to it.
    actions.setTarget(ZuviVideoActions::Target{7, QStringLiteral("BV1y"), 8});
    QVERIFY(!actions.isWatchLater());
}

void TestVideoActions::blankTextIsRefusedUnsent_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");
    QTest::newRow("comment") << int(ZuviVideoActions::CommentInput) << "评论"
                             << "评论内容不能为空";
    QTest::newRow("danmaku") << int(ZuviVideoActions::DanmakuInput) << "弹幕"
                             << "弹幕内容不能为空";
}

void TestVideoActions::blankTextIsRefusedUnsent()
{
    QFETCH(int, tag);
    QFETCH(QString, title);
    QFETCH(QString, message);
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kSignedIn);
    ZuviVideoActions actions(f.client.get());
    actions.setTarget(ZuviVideoActions::Target{5, QStringLiteral("BV1x"), 6});
    QSignalSpy results(&actions, &ZuviVideoActions::resultRequested);
    actions.inputSubmitted(tag, QStringLiteral("   \n\t "));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.at(0).at(0).toString(), title);
    QCOMPARE(results.at(0).at(1).toString(), message);
    QVERIFY(!actions.isInProgress());
    QCoreApplication::processEvents();
    QCOMPARE(f.server.requestCount(), 0);
}

void TestVideoActions::danmakuGoesOutAtTheMomentOfSending()
{
    ZuviClientTestFixture f;
    f.client->updateCredentialCookie(kSignedIn);
    f.answerJson(kDanmakuPostPath, ok());
    f.answerJson(kCommentPath, ok());
    ZuviVideoActions actions(f.client.get());
    double clock = 12.3456;
    actions.setPlaybackTimeSource([&clock] { return clock; });
    actions.setTarget(ZuviVideoActions::Target{5, QStringLiteral("BV1x"), 6});
    actions.setSelectedCID(9);
    QSignalSpy sent(&actions, &ZuviVideoActions::danmakuSent);
    QSignalSpy posted(&actions, &ZuviVideoActions::commentPosted);
    actions.inputSubmitted(ZuviVideoActions::DanmakuInput, QStringLiteral("  前方高能 "));
    clock = 20; // the movie plays on while the request runs
    ZUVI_WAIT(sent.size() == 1);
    QCOMPARE(sent.at(0).at(0).toString(), QStringLiteral("前方高能"));
    QCOMPARE(sent.at(0).at(1).toDouble(), 12.3456);
    const QString body = QString::fromUtf8(f.server.requests(kDanmakuPostPath).first().body);
    QVERIFY2(body.contains("&progress=12345&"), qPrintable(body));
    QVERIFY2(body.contains("&oid=9&"), qPrintable(body));

    actions.inputSubmitted(ZuviVideoActions::CommentInput, QStringLiteral("好"));
    ZUVI_WAIT(posted.size() == 1);
    QVERIFY(actions.statusText().isEmpty());
}

void TestVideoActions::inputDialogsByTag()
{
    ZuviClientTestFixture f;
    ZuviVideoActions actions(f.client.get());
    actions.setTarget(ZuviVideoActions::Target{5, QStringLiteral("BV1x"), 6});
    QSignalSpy inputs(&actions, &ZuviVideoActions::inputRequested);
    actions.videoInteractionButtonTapped(ZuviVideoActions::CommentButton);
    actions.videoInteractionButtonTapped(ZuviVideoActions::DanmakuButton);
    actions.videoInteractionButtonTapped(7201); // like: not offered here
    QCOMPARE(inputs.size(), 2);
    QCOMPARE(inputs.at(0), QVariantList({"发表评论", "输入评论内容", 7304}));
    QCOMPARE(inputs.at(1), QVariantList({"发弹幕", "输入弹幕内容", 7305}));
}

QTEST_MAIN(TestVideoActions)
#include "tst_zuvivideoactions.moc"
