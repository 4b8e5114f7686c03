#pragma once

#include "../net/zuviclienttestfixture.h"
#include "player/zuvivideoplayerviewcontroller.h"
#include "zuviscriptedmovieplayer.h"

#include <QPointer>
#include <QQuickWindow>

#include <memory>

// Answers and a ready-made video screen for the player suites: the screen
// runs on the loopback client fixture with scripted movie players, inside a
// window with a player container and a movie view of its own.
namespace ZuviPlayerTest {
inline const QString kDetailPath = QStringLiteral("/x/web-interface/view");
inline const QString kPlayURLPath = QStringLiteral("/x/player/playurl");
inline const QString kDanmakuPath = QStringLiteral("/x/v1/dm/list.so");
inline const QString kRelatedPath = QStringLiteral("/x/web-interface/archive/related");
inline const QString kCommentsPath = QStringLiteral("/x/v2/reply");
inline const QByteArray kDanmakuXml =
    "<i><d p=\"1.0,1,25,16777215\">一</d><d p=\"3.5,1,25,255\">二</d></i>";

inline QByteArray detailJson(int pageCount = 1, const QString &bvid = QStringLiteral("BV1test"),
                             int aid = 42)
{
    QJsonArray pages;
    for (int i = 0; i < pageCount; ++i)
        pages.append(
            QJsonObject{{"cid", 500 + i}, {"page", i + 1}, {"part", QString("P%1").arg(i + 1)}});
    const QJsonObject data{{"bvid", bvid},
                           {"aid", aid},
                           {"cid", 500},
                           {"title", "测试视频"},
                           {"owner", QJsonObject{{"name", "UP"}}},
                           {"pages", pages}};
    return QJsonDocument(QJsonObject{{"code", 0}, {"data", data}}).toJson();
}

inline QByteArray playJson(int quality,
                           const QString &url = QStringLiteral("http://127.0.0.1:9/v.mp4"))
{
    const QJsonObject data{{"quality", quality}, {"durl", QJsonArray{QJsonObject{{"url", url}}}}};
    return QJsonDocument(QJsonObject{{"code", 0}, {"data", data}}).toJson();
}

inline QByteArray dashOnlyJson()
{
    const QJsonObject data{{"quality", 64}, {"dash", QJsonObject{}}};
    return QJsonDocument(QJsonObject{{"code", 0}, {"data", data}}).toJson();
}

// Related videos: "BV1rel0" … with titles "相关0" ….
inline QByteArray relatedJson(int count)
{
    QJsonArray list;
    for (int i = 0; i < count; ++i)
        list.append(
            zuviVideoEntry(QStringLiteral("BV1rel%1").arg(i), QStringLiteral("相关%1").arg(i)));
    return zuviJson({{"code", 0}, {"data", list}});
}

// One page of comments; numbering starts at first so pages can overlap.
inline QByteArray commentsJson(int first, int count)
{
    QJsonArray replies;
    for (int i = first; i < first + count; ++i)
        replies.append(
            QJsonObject{{"member", QJsonObject{{"uname", QStringLiteral("用户%1").arg(i)}}},
                        {"content", QJsonObject{{"message", QStringLiteral("评论%1").arg(i)}}},
                        {"ctime", 1700000000 + i}});
    return zuviJson({{"code", 0}, {"data", QJsonObject{{"replies", replies}}}});
}

inline ZuviVideoItem listItem(qint64 cid = 500)
{
    ZuviVideoItem item;
    item.title = QStringLiteral("列表标题");
    item.bvid = QStringLiteral("BV1test");
    item.aid = 42;
    item.cid = cid;
    item.ownerName = QStringLiteral("UP");
    return item;
}
} // namespace ZuviPlayerTest

struct ZuviPlayerTestScreen {
    ZuviClientTestFixture f;
    QQuickWindow window;
    QQuickItem *container = nullptr;
    QQuickItem *movieView = nullptr;
    std::unique_ptr<ZuviVideoPlayerViewController> c;
    QList<QPointer<ZuviScriptedMoviePlayer>> players;

    ZuviPlayerTestScreen()
    {
        window.contentItem()->setSize(QSizeF(1024, 768));
        container = new QQuickItem(window.contentItem());
        container->setSize(QSizeF(640, 360));
        movieView = new QQuickItem(container);
        movieView->setSize(container->size());
    }

    void make(const ZuviVideoItem &item = ZuviPlayerTest::listItem())
    {
        c = std::make_unique<ZuviVideoPlayerViewController>(
            item, QStringLiteral("推荐"), f.client.get(), &f.scheduler, f.defaults.get(),
            [this](QObject *parent) {
                auto *p = new ZuviScriptedMoviePlayer(parent);
                p->setNaturalSize(QSizeF(1280, 720));
                players.append(p);
                return p;
            });
        c->setPlayerContainer(container);
        c->setMovieView(movieView);
    }

    ZuviScriptedMoviePlayer *lastPlayer() const
    {
        return players.isEmpty() ? nullptr : players.constLast().data();
    }
};
