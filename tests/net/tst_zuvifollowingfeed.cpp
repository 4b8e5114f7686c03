// The following feed: the request, and items of every kind turned into rows.
#include "net/zuvifollowingfeedparser.h"
#include "zuviclienttestfixture.h"

#include <QtTest>

namespace {
using Parser = ZuviFollowingFeedParser;

QJsonObject author()
{
    return QJsonObject{{"name", "作者"},
                       {"face", "//img.test/face.jpg"},
                       {"pub_action", "投稿了视频"},
                       {"pub_time", "1小时前"}};
}

// A feed item in the modules shape with the given major part.
QJsonObject item(const QString &id, const QJsonObject &major, const QString &text = QString(),
                 const QJsonObject &basic = QJsonObject())
{
    QJsonObject dynamic{{"major", major}};
    if (!text.isEmpty())
        dynamic.insert("desc", QJsonObject{{"text", text}});
    return QJsonObject{
        {"id_str", id},
        {"basic", basic},
        {"modules", QJsonObject{{"module_author", author()}, {"module_dynamic", dynamic}}}};
}

QJsonArray images(int count, bool repeatFirst = false)
{
    QJsonArray list;
    for (int i = 0; i < count; ++i)
        list.append(
            QJsonObject{{"src", QString("//img.test/%1.jpg").arg(repeatFirst && i == 1 ? 0 : i)}});
    return list;
}

ZuviFollowingRow parseOne(const QJsonObject &feedItem)
{
    ZuviError error;
    const auto page = Parser::parseFollowingFeedFromData(
        zuviJson({{"code", 0}, {"data", QJsonObject{{"items", QJsonArray{feedItem}}}}}), &error);
    return page && page->rows.size() == 1 ? page->rows.first() : ZuviFollowingRow();
}
} // namespace

class TestZuviFollowingFeed : public QObject
{
    Q_OBJECT
private slots:
    void request_data();
    void request();
    void pageEnvelope_data();
    void pageEnvelope();
    void rowKinds_data();
    void rowKinds();
    void liveRecord();
    void forwardTextOneLevel();
    void imageListRules();
    void emptyPicturePost();
    void articleDescription();
};

void TestZuviFollowingFeed::request_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("query");
    QTest::newRow("defaults") << "" << 0
                              << "timezone_offset=-480&type=all&page=1&limit=60&page_size=60";
    QTest::newRow("page 3") << "video" << 3
                            << "timezone_offset=-480&type=video&page=3&limit=60&page_size=60";
}

void TestZuviFollowingFeed::request()
{
    QFETCH(QString, type);
    QFETCH(int, page);
    QFETCH(QString, query);

    ZuviClientTestFixture f;
    f.client->updateCredentialCookie("SESSDATA=s");
    f.answerJson(
        "/x/polymer/web-dynamic/v1/feed/all",
        zuviJson({{"code", 0},
                  {"data", QJsonObject{{"items", QJsonArray{item("1", QJsonObject(), "你好")}},
                                       {"has_more", true},
                                       {"offset", 123}}}}));
    ZuviCompletionSpy<const QList<ZuviFollowingRow> &, bool, const QString &, const ZuviError &>
        spy;
    f.client->fetchFollowingRowsWithType(type, page, QString(), spy.completion());
    ZUVI_WAIT(spy.calls == 1);
    const auto &[rows, hasMore, next, error] = spy.arguments;
    QVERIFY(error.isNull());
    const ZuviRecordedRequest request = f.server.requests().first();
    QCOMPARE(request.query, query);
    QCOMPARE(request.header("Referer"), QByteArray("http://dynamic.test/"));
    QCOMPARE(request.header("Cookie"), QByteArray("SESSDATA=s"));
    QCOMPARE(rows.size(), 1);
    QVERIFY(hasMore);
    QCOMPARE(next, QString("123"));

    // The short form: page 1, no offset, rows and error only.
    ZuviCompletionSpy<const QList<ZuviFollowingRow> &, const ZuviError &> shortSpy;
    f.client->fetchFollowingRowsWithType(type, shortSpy.completion());
    ZUVI_WAIT(shortSpy.calls == 1);
    QCOMPARE(std::get<0>(shortSpy.arguments).size(), 1);
    QVERIFY(std::get<1>(shortSpy.arguments).isNull());
    QCOMPARE(f.server.requests().last().queryValue("page"), QString("1"));
}

void TestZuviFollowingFeed::pageEnvelope_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("offset");

    QTest::newRow("skips non-dictionaries")
        << zuviJson(
               {{"code", 0},
                {"data", QJsonObject{{"items", QJsonArray{1, "x", QJsonObject(), QJsonValue()}}}}})
        << 1 << 0 << ""
        << "";
    QTest::newRow("service error")
        << zuviJson({{"code", -101}}) << 0 << -101 << "关注动态接口返回错误"
        << "";
    QTest::newRow("offset text") << zuviJson({{"code", 0},
                                              {"data", QJsonObject{{"items", QJsonArray()},
                                                                   {"offset", "abc"}}}})
                                 << 0 << 0 << ""
                                 << "abc";
}

void TestZuviFollowingFeed::pageEnvelope()
{
    QFETCH(QByteArray, body);
    QFETCH(int, rows);
    QFETCH(int, code);
    QFETCH(QString, message);
    QFETCH(QString, offset);

    ZuviError error;
    const auto page = Parser::parseFollowingFeedFromData(body, &error);
    QCOMPARE(error.code, code);
    QCOMPARE(error.message, message);
    QCOMPARE(bool(page), code == 0);
    if (page) {
        QCOMPARE(page->rows.size(), rows);
        QCOMPARE(page->nextOffset, offset);
    }
}

void TestZuviFollowingFeed::rowKinds_data()
{
    QTest::addColumn<QJsonObject>("feedItem");
    QTest::addColumn<QString>("rowType");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("subtitle");
    QTest::addColumn<QString>("dynamicText");

    const QJsonObject archive{
        {"archive",
         QJsonObject{{"bvid", "BV1v"}, {"title", "视频标题"}, {"cover", "//img.test/v.jpg"}}}};
    QTest::newRow("video") << item("1", archive, "看看") << "video"
                           << "视频标题"
                           << "作者  投稿了视频  1小时前"
                           << "看看";
    QTest::newRow("article") << item("2", QJsonObject{{"article", QJsonObject{{"id", 88},
                                                                              {"title", "专栏"},
                                                                              {"label", "科技"}}}})
                             << "article"
                             << "专栏"
                             << "科技 · cv88"
                             << "";
    QTest::newRow("article without title")
        << item("3", QJsonObject{{"article", QJsonObject()}}, "", QJsonObject{{"rid_str", "99"}})
        << "article"
        << "专栏文章"
        << "cv99"
        << "";
    QTest::newRow("draw")
        << item("4", QJsonObject{{"draw", QJsonObject{{"id", 7}, {"items", images(2)}}}}, "图文")
        << "draw"
        << "图文动态"
        << "2张图片 · draw 7"
        << "图文";
    QTest::newRow("plain text") << item("5", QJsonObject(), "只是说说") << "dynamic"
                                << "只是说说"
                                << "作者  投稿了视频  1小时前"
                                << "只是说说";
    QTest::newRow("nothing at all") << QJsonObject{{"id", 6}} << "dynamic"
                                    << "动态更新"
                                    << "普通动态"
                                    << "";
}

void TestZuviFollowingFeed::rowKinds()
{
    QFETCH(QJsonObject, feedItem);
    QFETCH(QString, rowType);
    QFETCH(QString, title);
    QFETCH(QString, subtitle);
    QFETCH(QString, dynamicText);

    const ZuviFollowingRow row = parseOne(feedItem);
    QCOMPARE(row.value("rowType").toString(), rowType);
    QCOMPARE(row.value("title").toString(), title);
    QCOMPARE(row.value("subtitle").toString(), subtitle);
    QCOMPARE(row.value("dynamicText").toString(), dynamicText);
    QCOMPARE(row.contains("dynamicText"), !dynamicText.isEmpty());
    QVERIFY(!row.value("rowID").toString().isEmpty());
    QCOMPARE(row.contains("video"), rowType == "video");
    QCOMPARE(row.contains("articleInfo"), rowType == "article");
    QCOMPARE(row.contains("drawInfo"), rowType == "draw");
    if (rowType == "video")
        QCOMPARE(row.value("video").value<ZuviVideoItem>().bvid, QString("BV1v"));
}

void TestZuviFollowingFeed::liveRecord()
{
    const QJsonObject play{
        {"title", "直播标题"}, {"room_id", 1001},
        {"uid", "7"},          {"cover", "//img.test/live.jpg"},
        {"online", 23456},     {"parent_area_name", "游戏"},
        {"area_name", "单机"}, {"watched_show", QJsonObject{{"text_small", "1万人看过"}}},
        {"live_id", "L9"},     {"live_status", 1}};
    const QString content = QString::fromUtf8(zuviJson({{"live_play_info", play}}));
    const QJsonObject major{{"live_rcmd", QJsonObject{{"content", content}}}};
    const ZuviFollowingRow row = parseOne(item("9", major, "会被替换"));

    QCOMPARE(row.value("rowType").toString(), QString("live"));
    QCOMPARE(row.value("title").toString(), QString("直播标题"));
    QCOMPARE(row.value("dynamicText").toString(), QString("正在直播"));
    QCOMPARE(row.value("imageURLStrings").toStringList(), QStringList{"https://img.test/live.jpg"});
    const QVariantMap live = row.value("liveInfo").toMap();
    QCOMPARE(live.value("roomID").toString(), QString("1001"));
    QCOMPARE(live.value("area").toString(), QString("游戏 / 单机"));
    QCOMPARE(live.value("watched").toString(), QString("1万人看过"));
    QCOMPARE(live.value("liveID").toString(), QString("L9"));
    QCOMPARE(row.value("subtitle").toString(),
             QString("直播中 · 游戏 / 单机 · 2.3万在线 · 1万人看过"));

    // A live room that is off the air, with its info directly under live_rcmd.
    const QJsonObject offAir{
        {"live_rcmd", QJsonObject{{"live_play_info", QJsonObject{{"live_status", "0"}}}}}};
    const ZuviFollowingRow off = parseOne(item("10", offAir));
    QCOMPARE(off.value("title").toString(), QString("直播间"));
    QCOMPARE(off.value("subtitle").toString(), QString("未开播"));
}

void TestZuviFollowingFeed::forwardTextOneLevel()
{
    const QJsonObject grandOrig{{"desc", QJsonObject{{"text", "最深处"}}}};
    const QJsonObject orig{
        {"modules",
         QJsonObject{{"module_dynamic",
                      QJsonObject{{"desc", QJsonObject{{"rich_text_nodes",
                                                        QJsonArray{QJsonObject{{"text", "被转发"}},
                                                                   QJsonObject{{"orig_text",
                                                                                "的话"}}}}}}}}}}};
    QJsonObject forward = item("11", QJsonObject());
    forward.insert("orig", orig);
    QCOMPARE(Parser::followingDynamicTextFromItem(forward), QString("被转发的话"));

    // A forward of a forward is not followed to the second level.
    QJsonObject middle{{"orig", grandOrig}};
    QJsonObject top = item("12", QJsonObject());
    top.insert("orig", middle);
    QCOMPARE(Parser::followingDynamicTextFromItem(top), QString());
    QCOMPARE(parseOne(top).value("title").toString(), QString("动态更新"));
}

void TestZuviFollowingFeed::imageListRules()
{
    // Seven pictures give four; a repeated picture counts once.
    QStringList list = Parser::followingImageURLStringsFromItem(
        item("13", QJsonObject{{"draw", QJsonObject{{"items", images(7)}}}}));
    QCOMPARE(list.size(), 4);
    QCOMPARE(list.first(), QString("https://img.test/0.jpg"));
    list = Parser::followingImageURLStringsFromItem(
        item("14", QJsonObject{{"opus", QJsonObject{{"pics", images(3, true)}}}}));
    QCOMPARE(list, (QStringList{"https://img.test/0.jpg", "https://img.test/2.jpg"}));

    // Sources in order: rich-text pictures, common, then the forwarded post.
    QJsonObject feedItem{
        {"desc",
         QJsonObject{{"rich_text_nodes",
                      QJsonArray{QJsonObject{{"pics", QJsonArray{QJsonObject{{"img_src", "a"}}}},
                                             {"video", QJsonObject{{"cover", "b"}}}}}}}},
        {"major", QJsonObject{{"common", QJsonObject{{"image_url", "c"}}}}},
        {"orig", QJsonObject{{"major", QJsonObject{{"archive", QJsonObject{{"pic", "d"}}}}}}}};
    QCOMPARE(Parser::followingImageURLStringsFromItem(feedItem), (QStringList{"a", "b", "c", "d"}));
    QCOMPARE(Parser::firstImageURLStringFromDictionary(QJsonObject{{"url", ""}, {"pic", 5}}),
             QString("5"));
}

void TestZuviFollowingFeed::emptyPicturePost()
{
    const ZuviFollowingRow row = parseOne(item("15", QJsonObject{{"draw", QJsonObject()}}));
    QCOMPARE(row.value("rowType").toString(), QString("draw"));
    QCOMPARE(row.value("title").toString(), QString("图文动态"));
    QCOMPARE(row.value("dynamicText").toString(), QString("这条图文动态暂时没有可展示内容。"));
    QVERIFY(row.value("subtitle").toString().contains("图片列表为空"));
    QVERIFY(!row.contains("imageURLStrings"));
    const QVariantMap draw = row.value("drawInfo").toMap();
    QVERIFY(draw.value("empty").toBool());
}

void TestZuviFollowingFeed::articleDescription()
{
    QCOMPARE(Parser::cleanedArticleDescription("第一段[图片]第二段\n\n  第三段\t"),
             QString("第一段 第二段 第三段"));
    const QJsonObject article{
        {"article", QJsonObject{{"desc", "a[图片]b"},
                                {"covers", QJsonArray{"//img.test/c.jpg", "x"}},
                                {"jump_url", "//site.test/read/cv1"}}}};
    const ZuviFollowingRow row = parseOne(
        item("16", article, "", QJsonObject{{"comment_type", 12}, {"comment_id_str", "1"}}));
    QCOMPARE(row.value("dynamicText").toString(), QString("a b"));
    QCOMPARE(row.value("imageURLStrings").toStringList(), QStringList{"https://img.test/c.jpg"});
    const QVariantMap info = row.value("articleInfo").toMap();
    QCOMPARE(info.value("URLString").toString(), QString("https://site.test/read/cv1"));
    QCOMPARE(info.value("commentType").toString(), QString("12"));
    QCOMPARE(row.value("subtitle").toString(), QString("作者  投稿了视频  1小时前"));
}

QTEST_MAIN(TestZuviFollowingFeed)
#include "tst_zuvifollowingfeed.moc"
