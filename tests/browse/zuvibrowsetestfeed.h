#pragma once

#include "app/zuvidebuglog.h"
#include "net/zuviapiclient.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "platform/zuviworkqueue.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

// A loopback service for the browsing screens: a client pointed at a test
// server, with scratch defaults, log and notification centre.
struct ZuviBrowseTestService {
    ZuviTestHttpServer server;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    // The client's own timers (the search retry) run on this clock.
    ZuviVirtualScheduler clientClock;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviAPIClient> client;

    static constexpr const char *kRecommendedPath = "/x/web-interface/index/top/feed/rcmd";
    static constexpr const char *kPopularPath = "/x/web-interface/popular";
    static constexpr const char *kSearchPath = "/x/web-interface/search/type";

    // Failed answers the client has delivered; counted only once
    // watchFailedAnswers() has been called.
    int failedAnswers = 0;
    // Observes for the tests; goes before the centre it observes.
    QObject watcher;

    bool start()
    {
        if (!server.start())
            return false;
        log.reset(new ZuviDebugLog(defaults.get(), &center));
        client.reset(new ZuviAPIClient(defaults.get(), log.get(), &center,
                                       ZuviEndpoints::allOn(server.baseUrl()), &clientClock));
        return true;
    }

    // With developer mode on, the client announces every failed answer on
    // the main queue just before it hands the answer to its caller. Tests
    // use it to know that an answer a screen must ignore has arrived.
    void watchFailedAnswers()
    {
        defaults.get()->setBool(true, ZuviAPIClient::kDeveloperModeKey);
        center.addObserver(ZuviAPIClient::kRequestErrorLogUpdatedNotification, &watcher,
                           [this](const ZuviNotification &) { ++failedAnswers; });
    }

    // count videos whose ids start with prefix, as a list endpoint's entries.
    static QJsonArray entries(const QString &prefix, int count)
    {
        QJsonArray list;
        for (int i = 0; i < count; ++i) {
            list.append(QJsonObject{
                {"bvid", QStringLiteral("BV%1x%2").arg(prefix).arg(i)},
                {"title", QStringLiteral("%1 video %2").arg(prefix).arg(i)},
                {"author", QStringLiteral("author %1").arg(i)},
                {"owner", QJsonObject{{"name", QStringLiteral("owner %1").arg(i)}}},
                {"stat", QJsonObject{{"view", 1000 + i}, {"reply", i}}},
                {"duration", 125},
            });
        }
        return list;
    }

    // A recommended-feed answer ("data" → "item").
    static ZuviScriptedAnswer feedPage(const QString &prefix, int count, int delayMs = 0)
    {
        QJsonObject root{{"code", 0}, {"data", QJsonObject{{"item", entries(prefix, count)}}}};
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(QJsonDocument(root).toJson());
        answer.delayMs = delayMs;
        return answer;
    }

    // A popular answer ("data" → "list").
    static ZuviScriptedAnswer popularPage(const QString &prefix, int count)
    {
        QJsonObject root{{"code", 0}, {"data", QJsonObject{{"list", entries(prefix, count)}}}};
        return ZuviScriptedAnswer::json(QJsonDocument(root).toJson());
    }

    // A search answer ("data" → "result").
    static ZuviScriptedAnswer searchPage(const QString &prefix, int count, int delayMs = 0)
    {
        QJsonObject root{{"code", 0}, {"data", QJsonObject{{"result", entries(prefix, count)}}}};
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(QJsonDocument(root).toJson());
        answer.delayMs = delayMs;
        return answer;
    }

    // The service refusing with its own code and message.
    static ZuviScriptedAnswer serviceError(const QString &message, int delayMs = 0)
    {
        QJsonObject root{{"code", -352}, {"message", message}};
        ZuviScriptedAnswer answer = ZuviScriptedAnswer::json(QJsonDocument(root).toJson());
        answer.delayMs = delayMs;
        return answer;
    }
};
