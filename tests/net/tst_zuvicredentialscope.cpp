// The signed-in credential stays with the service: with the API, the image
// CDN and the configuration source on separate loopback hosts, only the API
// host ever sees the credential cookie, and no log the app keeps or prints
// (debug log, request-error log, Qt messages on stderr) holds its values.
#include "config/zuviremoteconfig.h"
#include "config/zuviremoteconfigoptions.h"
#include "images/zuviimageloader.h"
#include "net/zuviapiclient.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

#include <QBuffer>
#include <QImage>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {
const QByteArray kSession = "s3ssionSecret42";
const QByteArray kToken = "csrfT0kenSecret";
const QString kCredential =
    QStringLiteral("SESSDATA=%1; zuvi_jct=%2; DedeUserID=4242").arg(kSession, kToken);

QStringList capturedMessages;
void captureMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    capturedMessages.append(message);
}

bool holdsASecret(const QByteArray &text)
{
    return text.contains(kSession) || text.contains(kToken);
}

ZuviScriptedAnswer png()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return ZuviScriptedAnswer::text(bytes, "image/png");
}
} // namespace

class TestZuviCredentialScope : public QObject
{
    Q_OBJECT
private slots:
    void credentialGoesOnlyToServiceHostsAndIntoNoLog();
};

void TestZuviCredentialScope::credentialGoesOnlyToServiceHostsAndIntoNoLog()
{
    ZuviTestHttpServer api, images, config;
    QVERIFY(api.start() && images.start() && config.start());
    ZuviScratchDefaults defaults;
    defaults.get()->setBool(true, ZuviAPIClient::kDeveloperModeKey);
    ZuviNotificationCenter center;
    ZuviVirtualScheduler scheduler;
    ZuviDebugLog log(defaults.get(), &center);
    ZuviEndpoints endpoints = ZuviEndpoints::allOn(api.baseUrl());
    endpoints.remoteConfigSource = config.urlString("/config.json");
    ZuviAPIClient client(defaults.get(), &log, &center, endpoints, &scheduler);
    client.updateCredentialCookie(kCredential);
    ZuviImageLoader loader(&log, endpoints, nullptr);
    QTemporaryDir cacheDir;
    ZuviRemoteConfig remoteConfig(defaults.get(), &center, &scheduler);

    // Every message Qt would print, debug included, is kept instead.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=true"));
    capturedMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(captureMessage);

    // Answers that succeed and answers that fail, so that every log has lines.
    api.setAnswer(
        "GET", "/x/web-interface/popular",
        ZuviScriptedAnswer::json(R"({"code":0,"data":{"list":[{"bvid":"BV1a","title":"t",)"
                                 R"("pic":")" +
                                 images.urlString("/a.png").toUtf8() + R"("}]}})"));
    api.setAnswer("GET", "/x/web-interface/nav",
                  ZuviScriptedAnswer::json(R"({"code":-101,"message":"账号未登录"})"));
    api.setAnswer("GET", "/x/web-interface/view",
                  ZuviScriptedAnswer::text("<html>busy</html>", "text/html", 502));
    images.setAnswer("GET", "/a.png", png());
    config.setAnswer("GET", "/missing.json", ZuviScriptedAnswer::text("gone", "text/plain", 404));
    config.setAnswer("GET", "/config.json", ZuviScriptedAnswer::json(R"({"name":"c"})"));

    int answered = 0;
    QList<ZuviVideoItem> videos;
    client.fetchPopularPage(1, 20, [&](const QList<ZuviVideoItem> &list, const ZuviError &) {
        videos = list;
        ++answered;
    });
    client.fetchCurrentUserProfileWithCompletion(
        [&](const std::optional<ZuviUserProfile> &, const ZuviError &) { ++answered; });
    client.fetchVideoDetailWithBVID(
        "BV1a", [&](const std::optional<ZuviVideoDetail> &, const ZuviError &) { ++answered; });
    QTRY_COMPARE_WITH_TIMEOUT(answered, 3, 10000);
    QCOMPARE(videos.size(), 1);
    loader.loadImageWithURLString(QVariant(videos.first().coverURLString),
                                  [&](const QImage &) { ++answered; });
    loader.loadImageWithURLString(QVariant(images.urlString("/missing.png")),
                                  [&](const QImage &) { ++answered; });
    ZuviRemoteConfigOptions options = ZuviRemoteConfigOptions::optionsWithSources(
        QStringList{config.urlString("/missing.json"), config.urlString("/config.json")});
    options.cacheDirectoryPath = cacheDir.path();
    remoteConfig.startWithOptions(options);
    remoteConfig.refreshWithCompletion(
        [&](const std::optional<QJsonObject> &, const ZuviError &) { ++answered; });
    QTRY_COMPARE_WITH_TIMEOUT(answered, 6, 10000);
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QString());

    QVERIFY(api.requestCount() >= 3);
    for (const ZuviRecordedRequest &request : api.requests())
        QVERIFY2(request.header("Cookie").contains("SESSDATA=" + kSession),
                 qPrintable(request.path));
    QVERIFY(images.requestCount() >= 2);
    QVERIFY(config.requestCount() >= 2);
    for (const ZuviTestHttpServer *elsewhere : {&images, &config}) {
        for (const ZuviRecordedRequest &request : elsewhere->requests()) {
            QVERIFY2(!request.hasHeader("Cookie"), qPrintable(request.path));
            for (const auto &header : request.headers)
                QVERIFY2(!holdsASecret(header.second), header.first.constData());
            QVERIFY(!holdsASecret(request.query.toUtf8()));
        }
    }

    // The logs did record the failures, and none holds the credential.
    const QString debugLog = log.logText();
    QVERIFY(debugLog.contains(QStringLiteral("视频详情接口")));
    QVERIFY(!holdsASecret(debugLog.toUtf8()));
    for (const QString &entry : client.apiRequestErrorLogs())
        QVERIFY(!holdsASecret(entry.toUtf8()));
    for (const QString &message : capturedMessages)
        QVERIFY2(!holdsASecret(message.toUtf8()), qPrintable(message));
}

QTEST_MAIN(TestZuviCredentialScope)
#include "tst_zuvicredentialscope.moc"
