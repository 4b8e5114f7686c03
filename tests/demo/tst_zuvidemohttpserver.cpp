#include "zuvidemohttpserver.h"

#include <QTcpSocket>
#include <QtTest>

// The demo's HTTP/1.1 server on the wire: keep-alive and pipelined requests
// answered in order, HEAD, HTTP/1.0, malformed requests and late answers.
class TestZuviDemoHttpServer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void exchanges_data();
    void exchanges();
    void lateAnswersKeepTheirOrder();

private:
    // Sends raw bytes and collects what comes back until the connection
    // closes or the expected number of answers has arrived.
    QByteArray exchange(const QByteArray &raw, int answers);

    std::unique_ptr<ZuviDemoHttpServer> m_server;
    QList<ZuviDemoHttpServer::Responder> m_held; // answers a test releases later
    bool m_holdAnswers = false;
};

void TestZuviDemoHttpServer::init()
{
    m_server = std::make_unique<ZuviDemoHttpServer>();
    m_holdAnswers = false;
    m_held.clear();
    m_server->setHandler(
        [this](const ZuviDemoRequest &request, const ZuviDemoHttpServer::Responder &respond) {
            const QByteArray body = request.method + ' ' + request.path.toUtf8() + ' ' +
                                    request.queryValue("n").toUtf8() + ' ' + request.body;
            if (m_holdAnswers)
                m_held.append([respond, body](const ZuviDemoResponse &) {
                    respond(ZuviDemoResponse::content(body, "text/plain"));
                });
            else
                respond(ZuviDemoResponse::content(body, "text/plain"));
        });
    QString errorText;
    QVERIFY2(m_server->listen(0, &errorText), qPrintable(errorText));
}

void TestZuviDemoHttpServer::cleanup()
{
    m_server.reset();
}

QByteArray TestZuviDemoHttpServer::exchange(const QByteArray &raw, int answers)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_server->port());
    if (!socket.waitForConnected(5000))
        return "not connected";
    socket.write(raw);
    QByteArray received;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 5000 && received.count("HTTP/1.1 ") < answers &&
           socket.state() == QAbstractSocket::ConnectedState) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        received += socket.readAll();
    }
    // Whatever else arrives before the server closes or goes quiet.
    QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    received += socket.readAll();
    if (socket.state() != QAbstractSocket::ConnectedState)
        received += "[closed]";
    return received;
}

void TestZuviDemoHttpServer::exchanges_data()
{
    QTest::addColumn<QByteArray>("raw");
    QTest::addColumn<int>("answers");
    QTest::addColumn<QByteArrayList>("expected"); // in this order
    QTest::addColumn<bool>("closed");
    QTest::newRow("pipelined")
        << QByteArray(
               "GET /a?n=1 HTTP/1.1\r\nHost: x\r\n\r\nGET /b?n=2 HTTP/1.1\r\nHost: x\r\n\r\n")
        << 2 << QByteArrayList{"GET /a 1", "GET /b 2"} << false;
    QTest::newRow("body by length")
        << QByteArray("POST /p HTTP/1.1\r\nContent-Length: 5\r\n\r\nhelloGET /q HTTP/1.1\r\n\r\n")
        << 2 << QByteArrayList{"POST /p  hello", "GET /q"} << false;
    QTest::newRow("head has no body")
        << QByteArray("HEAD /h HTTP/1.1\r\n\r\n") << 1
        << QByteArrayList{"Content-Length: 9\r\n", "Connection: keep-alive\r\n\r\n"} << false;
    QTest::newRow("http 1.0 closes") << QByteArray("GET /old HTTP/1.0\r\n\r\n") << 1
                                     << QByteArrayList{"Connection: close", "GET /old"} << true;
    QTest::newRow("close asked") << QByteArray("GET /c HTTP/1.1\r\nConnection: close\r\n\r\n") << 1
                                 << QByteArrayList{"GET /c"} << true;
    QTest::newRow("malformed") << QByteArray("NONSENSE\r\n\r\n") << 1
                               << QByteArrayList{"HTTP/1.1 400 Bad Request"} << true;
    QTest::newRow("negative length") << QByteArray("POST /p HTTP/1.1\r\nContent-Length: -4\r\n\r\n")
                                     << 1 << QByteArrayList{"HTTP/1.1 400"} << true;
    QTest::newRow("escaped path") << QByteArray("GET /img/%E5%9B%BE.jpg HTTP/1.1\r\n\r\n") << 1
                                  << QByteArrayList{"GET /img/图.jpg"} << false;
}

void TestZuviDemoHttpServer::exchanges()
{
    QFETCH(QByteArray, raw);
    QFETCH(int, answers);
    QFETCH(QByteArrayList, expected);
    QFETCH(bool, closed);
    const QByteArray received = exchange(raw, answers);
    int from = 0;
    for (const QByteArray &piece : expected) {
        const int at = received.indexOf(piece, from);
        QVERIFY2(at >= 0, (piece + " missing in order from:\n" + received).constData());
        from = at + piece.size();
    }
    if (QByteArray(QTest::currentDataTag()) == "head has no body")
        QVERIFY(received.endsWith("\r\n\r\n"));
    QCOMPARE(received.endsWith("[closed]"), closed);
}

void TestZuviDemoHttpServer::lateAnswersKeepTheirOrder()
{
    // The first request is answered late; the second, already received,
    // must wait for it, since answers on a connection keep request order.
    m_holdAnswers = true;
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_server->port());
    QVERIFY(socket.waitForConnected(5000));
    socket.write("GET /first HTTP/1.1\r\n\r\nGET /second HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(m_held.size(), 1); // the second is not even handed over yet
    m_holdAnswers = false;
    m_held.takeFirst()(ZuviDemoResponse());
    QByteArray received;
    QTRY_VERIFY((received += socket.readAll()).count("HTTP/1.1 200") == 2);
    QVERIFY(received.indexOf("GET /first") < received.indexOf("GET /second"));
}

QTEST_GUILESS_MAIN(TestZuviDemoHttpServer)
#include "tst_zuvidemohttpserver.moc"
