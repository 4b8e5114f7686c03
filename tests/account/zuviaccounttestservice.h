#pragma once

#include "../browse/zuvibrowsetestfeed.h"
#include "app/zuvinavigationcontroller.h"
#include "platform/zuviidiom.h"
#include "zuvistandinviewcontroller.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The loopback service of the browsing screens plus what the account screens
// need: the account endpoints' answers, a screen clock and a navigation
// stack whose root stands in for the screen below the one under test.
struct ZuviAccountTestService : ZuviBrowseTestService {
    static constexpr const char *kGeneratePath = "/x/passport-login/web/qrcode/generate";
    static constexpr const char *kPollPath = "/x/passport-login/web/qrcode/poll";
    static constexpr const char *kNavPath = "/x/web-interface/nav";
    static constexpr const char *kRelationPath = "/x/relation/stat";
    static constexpr const char *kHistoryPath = "/x/web-interface/history/cursor";
    static constexpr const char *kWatchLaterPath = "/x/v2/history/toview/web";
    static constexpr const char *kFolderPath = "/x/v3/fav/folder/created/list-all";
    static constexpr const char *kFavoritesPath = "/x/v3/fav/resource/list";

    // The screens' own timers (the login poll, releasing popped screens).
    ZuviVirtualScheduler screenClock;

    static ZuviScriptedAnswer object(const QJsonObject &root, int delayMs = 0)
    {
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(QJsonDocument(root).toJson());
        answer.delayMs = delayMs;
        return answer;
    }
    static ZuviScriptedAnswer generated(const QString &url, const QString &key)
    {
        return object({{"code", 0}, {"data", QJsonObject{{"url", url}, {"qrcode_key", key}}}});
    }
    // A poll answer; code 0 also carries the session cookie.
    static ZuviScriptedAnswer polled(int code, const QString &message = QString(), int delayMs = 0)
    {
        ZuviScriptedAnswer answer = object(
            {{"code", 0}, {"data", QJsonObject{{"code", code}, {"message", message}}}}, delayMs);
        if (code == 0)
            answer.headers.append(
                qMakePair(QByteArray("Set-Cookie"), QByteArray("SESSDATA=s1; Path=/")));
        return answer;
    }
    static ZuviScriptedAnswer signedIn(int delayMs = 0)
    {
        return object({{"code", 0},
                       {"data", QJsonObject{{"isLogin", true},
                                            {"mid", 42},
                                            {"uname", QStringLiteral("测试用户")},
                                            {"face", "//127.0.0.1/face.jpg"},
                                            {"level_info", QJsonObject{{"current_level", 5}}},
                                            {"vipStatus", 1},
                                            {"money", 12}}}},
                      delayMs);
    }
    static ZuviScriptedAnswer signedOut()
    {
        return object(
            {{"code", -101}, {"message", "账号未登录"}, {"data", QJsonObject{{"isLogin", false}}}});
    }
    static ZuviScriptedAnswer relation(int following, int follower)
    {
        return object(
            {{"code", 0}, {"data", QJsonObject{{"following", following}, {"follower", follower}}}});
    }
    static ZuviScriptedAnswer videoList(const QString &prefix, int count, int delayMs = 0)
    {
        return object({{"code", 0}, {"data", QJsonObject{{"list", entries(prefix, count)}}}},
                      delayMs);
    }
    static ZuviScriptedAnswer folders(qint64 mediaID)
    {
        return object({{"code", 0},
                       {"data", QJsonObject{{"list", QJsonArray{QJsonObject{{"id", mediaID}}}}}}});
    }
};
