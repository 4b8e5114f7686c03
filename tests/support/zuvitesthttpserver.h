#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QPair>
#include <QThread>
#include <QUrl>
#include <QUrlQuery>

#include <functional>

class QTcpServer;
class QTcpSocket;

using ZuviHeaderList = QList<QPair<QByteArray, QByteArray>>;

// One request as the server received it.
struct ZuviRecordedRequest {
    QByteArray method;
    QString path;
    QString query;          // the raw query text, without "?"
    ZuviHeaderList headers; // in the order they arrived
    QByteArray body;

    // The first header of that name (case-insensitive), or an empty array.
    QByteArray header(const QByteArray &name) const;
    bool hasHeader(const QByteArray &name) const;
    QString queryValue(const QString &key) const { return QUrlQuery(query).queryItemValue(key); }
};

// What the server does with a request.
struct ZuviScriptedAnswer {
    int status = 200;
    ZuviHeaderList headers; // several Set-Cookie lines are allowed
    QByteArray body;
    int delayMs = 0;
    bool dropConnection = false; // close the connection without answering
    bool neverAnswer = false;    // keep the connection open and say nothing

    static ZuviScriptedAnswer json(const QByteArray &body, int status = 200);
    static ZuviScriptedAnswer text(const QByteArray &body, const QByteArray &contentType,
                                   int status = 200);
};

// A loopback HTTP/1.1 server for tests. It listens on 127.0.0.1 on a port the
// system picks, runs on a thread of its own (so a test may block without
// stalling it), answers each method and path from a script, and records
// every request it receives.
class ZuviTestHttpServer
{
public:
    using Handler = std::function<ZuviScriptedAnswer(const ZuviRecordedRequest &)>;

    ZuviTestHttpServer();
    ~ZuviTestHttpServer();

    ZuviTestHttpServer(const ZuviTestHttpServer &) = delete;
    ZuviTestHttpServer &operator=(const ZuviTestHttpServer &) = delete;

    bool start();
    quint16 port() const { return m_port; }
    QUrl baseUrl() const;
    QString urlString(const QString &pathAndQuery) const;

    // The method "*" answers any method. Later scripts for the same method
    // and path replace earlier ones. A sequence answers successive requests
    // with successive answers, repeating its last.
    void setAnswer(const QByteArray &method, const QString &path, const ZuviScriptedAnswer &answer);
    void setAnswerSequence(const QByteArray &method, const QString &path,
                           const QList<ZuviScriptedAnswer> &answers);
    void setHandler(const QByteArray &method, const QString &path, Handler handler);
    // Answers a path that has no script; by default a 404.
    void setFallbackHandler(Handler handler);

    QList<ZuviRecordedRequest> requests() const;
    QList<ZuviRecordedRequest> requests(const QString &path) const;
    int requestCount() const;
    int requestCount(const QString &path) const;
    void clearRequests();
    // The most requests that were received and not yet answered at one time.
    int maxInFlight() const;
    // Requests received and not yet answered now (a request never answered
    // stays in flight).
    int inFlight() const;

private:
    friend class ZuviTestHttpServerWorker;

    ZuviScriptedAnswer answerFor(const ZuviRecordedRequest &request);
    void noteArrival(const ZuviRecordedRequest &request);
    void noteAnswered();

    mutable QMutex m_mutex;
    QHash<QString, Handler> m_handlers;
    Handler m_fallback;
    QList<ZuviRecordedRequest> m_requests;
    int m_inFlight = 0;
    int m_maxInFlight = 0;
    quint16 m_port = 0;
    QThread m_thread;
    class ZuviTestHttpServerWorker *m_worker = nullptr;
};
