#pragma once

#include "zuvidemocontent.h"
#include "zuvidemofailureswitches.h"
#include "zuvidemohttpserver.h"
#include "zuvidemoimagerenderer.h"
#include "zuvidemostate.h"

#include <QCache>
#include <QHash>
#include <QObject>

class ZuviScheduler;

// Options of one running demo service.
struct ZuviDemoOptions {
    quint64 seed = 1;
    QString mediaDirectory;
    QString dataDirectory;
    double qrLifetimeSeconds = 180;
};

// The demo service: every endpoint the client calls, answered from the
// generated content and the remembered state, plus the loopback admin
// endpoints (announce, confirm, failure switches) and the QR confirmation
// page. It answers on the main thread; delays go through the scheduler it is
// given, so tests can run it on virtual time.
class ZuviDemoService : public QObject
{
    Q_OBJECT
public:
    ZuviDemoService(const ZuviDemoOptions &options, ZuviScheduler *scheduler,
                    QObject *parent = nullptr);
    ~ZuviDemoService() override;

    // Listens on 127.0.0.1 (port 0 picks a free one); reads a saved state first.
    bool start(quint16 port, QString *errorText);
    quint16 port() const { return m_server.port(); }
    QString origin() const;

    ZuviDemoContent &content() { return m_content; }
    ZuviDemoState &state() { return m_state; }
    ZuviDemoFailureSwitches &failures() { return m_failures; }

    // Answers one request; public so that the admin command and tests share it.
    void handle(const ZuviDemoRequest &request, const ZuviDemoHttpServer::Responder &respond);

signals:
    // A line worth telling the person running the service (a login to confirm).
    void notice(const QString &line);

private:
    using Route = ZuviDemoResponse (ZuviDemoService::*)(const ZuviDemoRequest &);

    void registerRoutes();
    ZuviDemoResponse dispatch(const ZuviDemoRequest &request);
    void applyFailure(const ZuviDemoFailure &failure, const ZuviDemoRequest &request,
                      const ZuviDemoHttpServer::Responder &respond);

    // Envelopes and checks.
    static ZuviDemoResponse ok(const QJsonValue &data, const QString &message = "ok");
    static ZuviDemoResponse fail(int code, const QString &message,
                                 const QJsonValue &data = QJsonValue::Undefined);
    const ZuviDemoSession *sessionOf(const ZuviDemoRequest &request) const;
    // The checks of every write: signed in, CSRF token, device identity.
    std::optional<ZuviDemoResponse> checkWrite(const ZuviDemoRequest &request,
                                               const ZuviDemoSession **session) const;
    QJsonObject accountVideoDictionary(const ZuviDemoVideo &video) const;
    ZuviDemoVideo withState(const ZuviDemoVideo &video) const;

    // Video lists.
    ZuviDemoResponse popular(const ZuviDemoRequest &request);
    ZuviDemoResponse recommended(const ZuviDemoRequest &request);
    ZuviDemoResponse ranking(const ZuviDemoRequest &request);
    ZuviDemoResponse legacyRanking(const ZuviDemoRequest &request);
    ZuviDemoResponse search(const ZuviDemoRequest &request);
    ZuviDemoResponse history(const ZuviDemoRequest &request);
    ZuviDemoResponse watchLater(const ZuviDemoRequest &request);
    ZuviDemoResponse favoriteFolders(const ZuviDemoRequest &request);
    ZuviDemoResponse favoriteContents(const ZuviDemoRequest &request);
    // One video.
    ZuviDemoResponse view(const ZuviDemoRequest &request);
    ZuviDemoResponse playURL(const ZuviDemoRequest &request);
    ZuviDemoResponse danmaku(const ZuviDemoRequest &request);
    ZuviDemoResponse related(const ZuviDemoRequest &request);
    ZuviDemoResponse comments(const ZuviDemoRequest &request);
    ZuviDemoResponse mainComments(const ZuviDemoRequest &request);
    ZuviDemoResponse following(const ZuviDemoRequest &request);
    // Account.
    ZuviDemoResponse qrGenerate(const ZuviDemoRequest &request);
    ZuviDemoResponse qrPoll(const ZuviDemoRequest &request);
    ZuviDemoResponse nav(const ZuviDemoRequest &request);
    ZuviDemoResponse relationStat(const ZuviDemoRequest &request);
    ZuviDemoResponse fingerprint(const ZuviDemoRequest &request);
    // Writes.
    ZuviDemoResponse like(const ZuviDemoRequest &request);
    ZuviDemoResponse favoriteDeal(const ZuviDemoRequest &request);
    ZuviDemoResponse watchLaterAdd(const ZuviDemoRequest &request);
    ZuviDemoResponse replyAdd(const ZuviDemoRequest &request);
    ZuviDemoResponse danmakuPost(const ZuviDemoRequest &request);
    // Configuration, pictures, media.
    ZuviDemoResponse remoteConfig(const ZuviDemoRequest &request);
    ZuviDemoResponse picture(const ZuviDemoRequest &request);
    ZuviDemoResponse media(const ZuviDemoRequest &request);
    // The person running the service.
    ZuviDemoResponse qrPage(const ZuviDemoRequest &request);
    ZuviDemoResponse qrConfirm(const ZuviDemoRequest &request);
    ZuviDemoResponse adminAnnounce(const ZuviDemoRequest &request);
    ZuviDemoResponse adminConfirm(const ZuviDemoRequest &request);
    ZuviDemoResponse adminFail(const ZuviDemoRequest &request);
    ZuviDemoResponse adminState(const ZuviDemoRequest &request);
    ZuviDemoResponse index(const ZuviDemoRequest &request);

    QByteArray danmakuDocument(qint64 cid);
    QByteArray configDocument(bool developer) const;

    ZuviDemoOptions m_options;
    ZuviScheduler *m_scheduler;
    ZuviDemoContent m_content;
    ZuviDemoState m_state;
    ZuviDemoFailureSwitches m_failures;
    ZuviDemoImageRenderer m_images;
    ZuviDemoHttpServer m_server;
    QHash<QString, Route> m_routes;
    QCache<qint64, QByteArray> m_danmakuCache;
    QHash<QString, QByteArray> m_mediaCache;
};
