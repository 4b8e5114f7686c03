#include "zuvicli.h"

#include "net/zuviapiclient.h"
#include "net/zuvivideocontentparser.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvidefaults.h"
#include "platform/zuvilaunchoptions.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvischeduler.h"
#include "zuviclijson.h"
#include "zuviterminalqrcode.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcessEnvironment>

#include <cstdio>

const char *const ZuviCLI::kErrorDomain = "ZuviCLIErrorDomain";

namespace {
// Options that take a value, and flags that stand alone.
const QStringList kValueOptions{"page",   "page-size", "rid",      "route",     "keyword",
                                "bvid",   "aid",       "cid",      "qualities", "type",
                                "offset", "text",      "progress", "file",      "mid"};
const QStringList kFlags{"summary", "developer-mode"};
const char *const kLoginPollName = "loginPoll";

ZuviError cliError(int code, const QString &message)
{
    return ZuviError(ZuviCLI::kErrorDomain, code, message);
}

void writeErr(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}
} // namespace

ZuviCLI::ZuviCLI() = default;

ZuviCLI::~ZuviCLI() = default;

QString ZuviCLI::usageText()
{
    return QStringLiteral(
        "usage: oldzuvi-cli [--endpoints FILE] [--settings FILE] [--developer-mode] COMMAND "
        "[options]\n"
        "  popular | recommended        [--page N] [--page-size N]\n"
        "  ranking                      [--rid N] [--route NAME] [--page-size N]\n"
        "  region-ranking               [--rid N]\n"
        "  search                       --keyword TEXT [--page N]\n"
        "  history | watch-later | nav | login | logout\n"
        "  favorites                    [--mid N]  (default: the signed-in member)\n"
        "  detail | related             --bvid ID\n"
        "  playurl                      --bvid ID --cid N [--qualities 64,32,16]\n"
        "  danmaku                      --cid N | --file PATH   [--summary]\n"
        "  comments                     --aid N [--bvid ID] [--page N] [--page-size N]\n"
        "  following                    [--type all|video|...] [--page N] [--offset TEXT]\n"
        "  like | favorite | add-watch-later   --aid N [--bvid ID]\n"
        "  comment                      --aid N [--bvid ID] --text TEXT\n"
        "  send-danmaku                 --aid N --cid N [--bvid ID] --text TEXT [--progress MS]\n");
}

int ZuviCLI::run(const QStringList &arguments)
{
    ZuviLaunchOptions launch;
    ZuviError error;
    if (!ZuviLaunchOptions::parse(arguments, QProcessEnvironment::systemEnvironment(), &launch,
                                  &error)) {
        fail(error, UsageError);
        return m_status;
    }
    launch.apply();
    if (!parseOptions(launch.remaining, &error)) {
        fail(error, UsageError);
        return m_status;
    }
    m_client =
        std::make_unique<ZuviAPIClient>(ZuviDefaults::standardDefaults(), ZuviDebugLog::sharedLog(),
                                        ZuviNotificationCenter::defaultCenter(), launch.endpoints,
                                        ZuviScheduler::sharedScheduler());
    if (has("developer-mode")) {
        m_client->setDeveloperModeForced(true);
        ZuviNotificationCenter::defaultCenter()->addObserver(
            ZuviAPIClient::kDanmakuLogNotification, this, [](const ZuviNotification &note) {
                writeErr(QStringLiteral("[弹幕接口] %1\n")
                             .arg(note.userInfo.value("message").toString()));
            });
    }

    static const QHash<QString, Command> commands{
        {"popular", &ZuviCLI::popular},
        {"recommended", &ZuviCLI::recommended},
        {"ranking", &ZuviCLI::ranking},
        {"region-ranking", &ZuviCLI::regionRanking},
        {"search", &ZuviCLI::search},
        {"history", &ZuviCLI::history},
        {"watch-later", &ZuviCLI::watchLater},
        {"favorites", &ZuviCLI::favorites},
        {"detail", &ZuviCLI::detail},
        {"playurl", &ZuviCLI::playurl},
        {"danmaku", &ZuviCLI::danmaku},
        {"related", &ZuviCLI::related},
        {"comments", &ZuviCLI::comments},
        {"following", &ZuviCLI::following},
        {"nav", &ZuviCLI::nav},
        {"login", &ZuviCLI::login},
        {"logout", &ZuviCLI::logout},
        {"like", &ZuviCLI::like},
        {"favorite", &ZuviCLI::favorite},
        {"add-watch-later", &ZuviCLI::addWatchLater},
        {"comment", &ZuviCLI::comment},
        {"send-danmaku", &ZuviCLI::sendDanmaku},
    };
    const Command command = commands.value(m_command);
    if (!command) {
        usage(m_command.isEmpty() ? QStringLiteral("缺少子命令")
                                  : QStringLiteral("未知的子命令 \"%1\"").arg(m_command));
        return m_status;
    }
    (this->*command)();
    if (!m_done)
        m_loop.exec();
    return m_status;
}

// --- Arguments

bool ZuviCLI::parseOptions(const QStringList &arguments, ZuviError *error)
{
    for (int i = 0; i < arguments.size(); ++i) {
        const QString argument = arguments.at(i);
        if (!argument.startsWith(QStringLiteral("--"))) {
            if (!m_command.isEmpty()) {
                *error = cliError(2, QStringLiteral("多余的参数 \"%1\"").arg(argument));
                return false;
            }
            m_command = argument;
            continue;
        }
        QString name = argument.mid(2);
        QString value;
        const int equals = name.indexOf('=');
        const bool inlineValue = equals >= 0;
        if (inlineValue) {
            value = name.mid(equals + 1);
            name = name.left(equals);
        }
        if (kFlags.contains(name) && !inlineValue) {
            m_options.insert(name, QStringLiteral("1"));
            continue;
        }
        if (!kValueOptions.contains(name)) {
            *error = cliError(2, QStringLiteral("未知的选项 \"--%1\"").arg(name));
            return false;
        }
        if (!inlineValue) {
            if (i + 1 >= arguments.size()) {
                *error = cliError(2, QStringLiteral("--%1 需要一个参数").arg(name));
                return false;
            }
            value = arguments.at(++i);
        }
        m_options.insert(name, value);
    }
    return true;
}

qint64 ZuviCLI::number(const QString &name, qint64 fallback)
{
    if (!has(name))
        return fallback;
    bool ok = false;
    const qint64 value = text(name).trimmed().toLongLong(&ok);
    if (!ok) {
        usage(QStringLiteral("--%1 需要一个整数，而不是 \"%2\"").arg(name, text(name)));
        return fallback;
    }
    return value;
}

QList<int> ZuviCLI::qualities()
{
    QList<int> list;
    if (!has("qualities"))
        return {64, 32, 16};
    for (const QString &piece : text("qualities").split(',', Qt::SkipEmptyParts)) {
        bool ok = false;
        const int quality = piece.trimmed().toInt(&ok);
        if (!ok) {
            usage(QStringLiteral("--qualities 需要用逗号分隔的整数，例如 64,32,16"));
            return {};
        }
        list.append(quality);
    }
    return list;
}

bool ZuviCLI::require(const QStringList &names)
{
    for (const QString &name : names) {
        if (!has(name)) {
            usage(QStringLiteral("%1 需要 --%2").arg(m_command, name));
            return false;
        }
    }
    return true;
}

// --- Output

void ZuviCLI::printLine(const QJsonValue &value, bool indented)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    const QByteArray bytes =
        document.toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact).trimmed() +
        '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void ZuviCLI::finish(const QJsonValue &result, int status)
{
    if (m_done)
        return;
    m_done = true;
    m_status = status;
    printLine(result, true);
    m_loop.exit(status);
}

void ZuviCLI::fail(const ZuviError &error, int status)
{
    finish(ZuviCLIJson::error(error), status);
}

void ZuviCLI::usage(const QString &message)
{
    if (m_done)
        return;
    writeErr(usageText());
    fail(cliError(2, message), UsageError);
}

// --- Video lists

ZuviAPIClient::VideosCompletion ZuviCLI::videosPrinter()
{
    return [this](const QList<ZuviVideoItem> &videos, const ZuviError &error) {
        if (error.hasError())
            fail(error);
        else
            finish(ZuviCLIJson::videoItems(videos));
    };
}

void ZuviCLI::popular()
{
    const int page = int(number("page", 1));
    const int pageSize = int(number("page-size", 0));
    if (!m_done)
        m_client->fetchPopularPage(page, pageSize, videosPrinter());
}

void ZuviCLI::recommended()
{
    const int page = int(number("page", 1));
    const int pageSize = int(number("page-size", 0));
    if (!m_done)
        m_client->fetchRecommendedPage(page, pageSize, videosPrinter());
}

void ZuviCLI::ranking()
{
    const int rid = int(number("rid", 0));
    const int pageSize = int(number("page-size", 0));
    if (!m_done)
        m_client->fetchWebRankingWithRID(rid, text("route"), pageSize, videosPrinter());
}

void ZuviCLI::regionRanking()
{
    const int rid = int(number("rid", 0));
    if (!m_done)
        m_client->fetchRegionRankingWithRID(rid, videosPrinter());
}

void ZuviCLI::search()
{
    if (!require({"keyword"}))
        return;
    const int page = int(number("page", 1));
    if (!m_done)
        m_client->fetchSearchVideosWithKeyword(text("keyword"), page, videosPrinter());
}

void ZuviCLI::history()
{
    m_client->fetchHistoryVideosWithCompletion(videosPrinter());
}

void ZuviCLI::watchLater()
{
    m_client->fetchWatchLaterVideosWithCompletion(videosPrinter());
}

void ZuviCLI::favorites()
{
    const qint64 mid = number("mid", m_client->currentMIDFromCredentialCookie());
    if (!m_done)
        m_client->fetchFavoriteVideosForMID(mid, videosPrinter());
}

void ZuviCLI::related()
{
    if (require({"bvid"}))
        m_client->fetchRelatedVideosWithBVID(text("bvid"), videosPrinter());
}

// --- One video

void ZuviCLI::detail()
{
    if (!require({"bvid"}))
        return;
    m_client->fetchVideoDetailWithBVID(
        text("bvid"), [this](const std::optional<ZuviVideoDetail> &detail, const ZuviError &error) {
            if (error.hasError() || !detail)
                fail(error);
            else
                finish(ZuviCLIJson::videoDetail(*detail));
        });
}

void ZuviCLI::playurl()
{
    if (!require({"bvid", "cid"}))
        return;
    const qint64 cid = number("cid", 0);
    const QList<int> walk = qualities();
    if (m_done)
        return;
    m_client->fetchPlayURLWithBVID(text("bvid"), cid, walk,
                                   [this](const QString &url, int quality, const ZuviError &error) {
                                       if (error.hasError())
                                           fail(error);
                                       else
                                           finish(ZuviCLIJson::playURL(url, quality));
                                   });
}

void ZuviCLI::danmaku()
{
    const bool summary = has("summary");
    auto print = [this, summary](const QList<ZuviDanmakuItem> &items) {
        finish(summary ? QJsonValue(ZuviCLIJson::danmakuSummary(items))
                       : QJsonValue(ZuviCLIJson::danmakuItems(items)));
    };
    if (has("file")) {
        // A local document goes through the same parser and sort as a download.
        QFile file(text("file"));
        if (!file.open(QIODevice::ReadOnly)) {
            fail(cliError(
                3, QStringLiteral("无法读取文件 %1：%2").arg(file.fileName(), file.errorString())));
            return;
        }
        ZuviError error;
        const auto items =
            ZuviVideoContentParser::parseDanmakuItemsFromData(file.readAll(), &error);
        if (items)
            print(*items);
        else
            fail(error);
        return;
    }
    if (!require({"cid"}))
        return;
    const qint64 cid = number("cid", 0);
    if (m_done)
        return;
    m_client->fetchDanmakuWithCID(
        cid, [this, print](const QList<ZuviDanmakuItem> &items, const ZuviError &error) {
            if (error.hasError())
                fail(error);
            else
                print(items);
        });
}

void ZuviCLI::comments()
{
    if (!require({"aid"}))
        return;
    const qint64 aid = number("aid", 0);
    const int page = int(number("page", 1));
    const int pageSize = int(number("page-size", 20));
    if (m_done)
        return;
    m_client->fetchCommentsForAID(
        aid, text("bvid"), page, pageSize,
        [this](const QList<ZuviCommentItem> &comments, const ZuviError &error) {
            if (error.hasError())
                fail(error);
            else
                finish(ZuviCLIJson::commentItems(comments));
        });
}

// --- Following feed and account

void ZuviCLI::following()
{
    const int page = int(number("page", 1));
    if (m_done)
        return;
    m_client->fetchFollowingRowsWithType(
        text("type"), page, text("offset"),
        [this](const QList<ZuviFollowingRow> &rows, bool hasMore, const QString &nextOffset,
               const ZuviError &error) {
            if (error.hasError())
                fail(error);
            else
                finish(ZuviCLIJson::followingPage(rows, hasMore, nextOffset));
        });
}

void ZuviCLI::nav()
{
    m_client->fetchCurrentUserProfileWithCompletion(
        [this](const std::optional<ZuviUserProfile> &profile, const ZuviError &error) {
            if (error.hasError() || !profile)
                fail(error);
            else
                finish(ZuviCLIJson::userProfile(*profile));
        });
}

void ZuviCLI::logout()
{
    m_client->clearCredentialCookie();
    finish(ZuviCLIJson::action(true, QStringLiteral("已退出登录。")));
}

void ZuviCLI::login()
{
    m_client->generateLoginQRCodeWithCompletion(
        [this](const QString &url, const QString &key, const ZuviError &error) {
            if (error.hasError()) {
                fail(error);
                return;
            }
            writeErr(ZuviTerminalQRCode::textForString(url));
            writeErr(QStringLiteral("请使用手机客户端扫码并确认登录：%1\n").arg(url));
            printLine(QJsonObject{{"url", url}, {"qrcodeKey", key}}, false);
            // Poll at once, then every two seconds until the service says
            // the code is used or expired.
            ZuviScheduler::sharedScheduler()->repeat(this, kLoginPollName, 2.0,
                                                     [this, key] { pollLogin(key); });
            pollLogin(key);
        });
}

void ZuviCLI::pollLogin(const QString &key)
{
    if (m_pollInFlight || m_done)
        return;
    m_pollInFlight = true;
    m_client->pollLoginQRCodeWithKey(
        key, [this](int code, const QString &message, const ZuviError &error) {
            m_pollInFlight = false;
            if (error.hasError()) {
                // A failed poll is shown and polling goes on.
                printLine(QJsonObject{{"code", code}, {"message", error.message}}, false);
                return;
            }
            if (code == 0 || code == 86038)
                ZuviScheduler::sharedScheduler()->cancel(this, kLoginPollName);
            if (code == 0) {
                finish(QJsonObject{{"code", code},
                                   {"message", message},
                                   {"stored", !m_client->credentialCookie().isEmpty()}});
            } else if (code == 86038) {
                fail(ZuviAPIClient::errorWithCode(code, message));
            } else {
                printLine(QJsonObject{{"code", code}, {"message", message}}, false);
            }
        });
}

// --- Signed-in actions

ZuviAPIClient::ActionCompletion ZuviCLI::actionPrinter()
{
    return [this](bool success, const QString &message, const ZuviError &error) {
        if (success)
            finish(ZuviCLIJson::action(success, message));
        else
            fail(error);
    };
}

void ZuviCLI::like()
{
    const qint64 aid = number("aid", 0);
    if (!m_done)
        m_client->likeVideoWithAID(aid, text("bvid"), actionPrinter());
}

void ZuviCLI::favorite()
{
    const qint64 aid = number("aid", 0);
    if (!m_done)
        m_client->addFavoriteWithAID(aid, text("bvid"), actionPrinter());
}

void ZuviCLI::addWatchLater()
{
    const qint64 aid = number("aid", 0);
    if (!m_done)
        m_client->addWatchLaterWithAID(aid, text("bvid"), actionPrinter());
}

void ZuviCLI::comment()
{
    const qint64 aid = number("aid", 0);
    if (!m_done)
        m_client->sendCommentForAID(aid, text("bvid"), text("text"), actionPrinter());
}

void ZuviCLI::sendDanmaku()
{
    const qint64 aid = number("aid", 0);
    const qint64 cid = number("cid", 0);
    const int progress = int(number("progress", 0));
    if (!m_done)
        m_client->sendDanmakuWithAID(aid, cid, text("bvid"), text("text"), progress,
                                     actionPrinter());
}
