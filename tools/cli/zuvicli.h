#pragma once

#include "net/zuviapiclient.h"
#include "platform/zuvierror.h"

#include <QEventLoop>
#include <QHash>
#include <QJsonValue>
#include <QObject>
#include <QStringList>

#include <memory>

// oldzuvi-cli: one subcommand per client operation. The result goes to
// stdout as JSON; a failure prints {"error": {...}} and ends with a non-zero
// status. Progress (the login QR code, developer-mode traces) goes to stderr.
class ZuviCLI : public QObject
{
    Q_OBJECT
public:
    static const char *const kErrorDomain;
    enum ExitStatus { Success = 0, Failure = 1, UsageError = 2 };

    ZuviCLI();
    ~ZuviCLI() override;

    // Runs one command line (the program name first) to its end.
    int run(const QStringList &arguments);

    static QString usageText();

private:
    using Command = void (ZuviCLI::*)();

    bool parseOptions(const QStringList &arguments, ZuviError *error);
    bool has(const QString &name) const { return m_options.contains(name); }
    QString text(const QString &name) const { return m_options.value(name); }
    // The option as a number; a malformed value is a usage error.
    qint64 number(const QString &name, qint64 fallback);
    QList<int> qualities();
    bool require(const QStringList &names);
    void finish(const QJsonValue &result, int status = Success);
    void fail(const ZuviError &error, int status = Failure);
    void usage(const QString &message);
    void printLine(const QJsonValue &value, bool indented);
    // Completions shared by the list commands and the action commands.
    ZuviAPIClient::VideosCompletion videosPrinter();
    ZuviAPIClient::ActionCompletion actionPrinter();

    void popular();
    void recommended();
    void ranking();
    void regionRanking();
    void search();
    void history();
    void watchLater();
    void favorites();
    void detail();
    void playurl();
    void danmaku();
    void related();
    void comments();
    void following();
    void nav();
    void login();
    void logout();
    void like();
    void favorite();
    void addWatchLater();
    void comment();
    void sendDanmaku();

    void pollLogin(const QString &key);

    std::unique_ptr<ZuviAPIClient> m_client;
    QHash<QString, QString> m_options;
    QString m_command;
    QEventLoop m_loop;
    int m_status = Success;
    bool m_done = false;
    bool m_pollInFlight = false;
};
