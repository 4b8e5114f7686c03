#pragma once

#include "net/zuviapiclient.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <functional>
#include <memory>
#include <tuple>

// A client wired to scratch services: the API host on a loopback server, the
// passport and comment hosts on a second one (so a request on the wrong host
// is seen), and the hosts that only appear in headers under names of their
// own. Timers run on a virtual clock.
struct ZuviClientTestFixture {
    ZuviTestHttpServer server;
    ZuviTestHttpServer otherServer;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviAPIClient> client;
    ZuviEndpoints endpoints;

    ZuviClientTestFixture()
    {
        server.start();
        otherServer.start();
        endpoints = ZuviEndpoints::allOn(server.baseUrl());
        endpoints.passport = otherServer.baseUrl();
        endpoints.comment = otherServer.baseUrl();
        endpoints.web = QUrl("http://web.test");
        endpoints.search = QUrl("http://search.test");
        endpoints.space = QUrl("http://space.test");
        endpoints.dynamic = QUrl("http://dynamic.test");
        endpoints.videoCDNDomainSuffix = "cdn.test";
        rebuild();
    }

    void rebuild()
    {
        client.reset();
        log = std::make_unique<ZuviDebugLog>(defaults.get(), &center);
        client = std::make_unique<ZuviAPIClient>(defaults.get(), log.get(), &center, endpoints,
                                                 &scheduler);
        client->setRequestTimeoutMs(5000);
    }

    void answerJson(const QString &path, const QByteArray &json, ZuviTestHttpServer *on = nullptr)
    {
        (on ? on : &server)->setAnswer("*", path, ZuviScriptedAnswer::json(json));
    }

    // Sends a request of the test's own behind everything the client has sent
    // so far and waits until the server has it. The transport sends in order,
    // so a request the client wrongly sent earlier is on the record by then:
    // "nothing was sent" is checked without waiting for a guessed time.
    void settle()
    {
        const int before = server.requestCount(kSettlePath);
        client->send(client->requestWithURLString(server.urlString(kSettlePath), QString()),
                     [](const ZuviHTTPResponse &, const ZuviError &) {});
        QTRY_COMPARE_WITH_TIMEOUT(server.requestCount(kSettlePath), before + 1, 10000);
    }
    // The requests the client itself sent (those of settle() left out).
    int clientRequestCount() const
    {
        return server.requestCount() - server.requestCount(kSettlePath);
    }

    static inline const QString kSettlePath = QStringLiteral("/settle");
};

// Keeps what a completion was last called with, and how often it was called:
// hand spy.completion() to an operation, wait on spy.calls, then read
// spy.arguments (a tuple, for a structured binding).
template <typename... Args> struct ZuviCompletionSpy {
    int calls = 0;
    std::tuple<std::decay_t<Args>...> arguments;

    std::function<void(Args...)> completion()
    {
        return [this](Args... received) {
            ++calls;
            arguments = std::make_tuple(received...);
        };
    }
};

// Spins the event loop until the flag is set (completions arrive on the main thread).
#define ZUVI_WAIT(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 10000)

inline QByteArray zuviJson(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// A list entry that every video factory accepts.
inline QJsonObject zuviVideoEntry(const QString &bvid, const QString &title)
{
    return QJsonObject{{"bvid", bvid},
                       {"title", title},
                       {"owner", QJsonObject{{"name", "UP主"}}},
                       {"stat", QJsonObject{{"view", 12345}, {"reply", 3}}},
                       {"pic", "//img.test/a.jpg"},
                       {"duration", 75},
                       {"aid", 5},
                       {"cid", 6}};
}
Q_DECLARE_METATYPE(ZuviScriptedAnswer)
