// oldzuvi-demo-service: the offline service the app and the end-to-end tests
// run against, and the small commands that steer a running one.

#include "platform/zuviendpoints.h"
#include "platform/zuvischeduler.h"
#include "zuvidemoadminclient.h"
#include "zuvidemoservice.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QSaveFile>

#include <cstdio>

namespace {
void printLine(const QString &line, FILE *stream = stdout)
{
    std::fputs(line.toUtf8().constData(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

int failWith(const QString &message)
{
    printLine(QStringLiteral("oldzuvi-demo-service: %1").arg(message), stderr);
    return 1;
}

quint16 portOption(const QCommandLineParser &parser, bool *ok)
{
    const int port = parser.value("port").toInt(ok);
    *ok = *ok && port >= 0 && port <= 65535;
    return quint16(port);
}

// The commands that talk to a running service.
int runCommand(const QString &command, const QCommandLineParser &parser)
{
    bool ok = false;
    const quint16 port = portOption(parser, &ok);
    if (!ok || port == 0)
        return failWith(QStringLiteral("--port 必须是运行中服务的端口"));
    const QStringList arguments = parser.positionalArguments().mid(1);
    QString path;
    QVariantMap form;
    if (command == QLatin1String("announce")) {
        if (arguments.isEmpty() && parser.value("image").isEmpty())
            return failWith(QStringLiteral(
                "用法：oldzuvi-demo-service announce \"文字\" [--image URL] [--dev]"));
        path = "/admin/announce";
        form = {{"text", arguments.value(0)},
                {"image", parser.value("image")},
                {"dev", parser.isSet("dev") ? "1" : "0"}};
    } else if (command == QLatin1String("confirm")) {
        path = "/admin/confirm";
        form = {{"qrcode_key", parser.value("key")}};
    } else if (command == QLatin1String("fail")) {
        if (arguments.size() == 1 && arguments.at(0) == QLatin1String("off")) {
            form = {{"path", ""}, {"mode", "off"}};
        } else if (arguments.size() == 2) {
            form = {{"path", arguments.at(0)},
                    {"mode", arguments.at(1)},
                    {"times", parser.value("times")}};
        } else {
            return failWith(QStringLiteral(
                "用法：oldzuvi-demo-service fail 路径 方式 [--times N]，或 fail off"));
        }
        path = "/admin/fail";
    } else if (command == QLatin1String("state")) {
        path = "/admin/state";
    } else {
        return failWith(QStringLiteral("不认识的命令：%1").arg(command));
    }
    QJsonValue answer;
    QString errorText;
    if (!ZuviDemoAdminClient(port).call(path, form, &answer, &errorText))
        return failWith(errorText);
    const QJsonDocument document =
        answer.isArray() ? QJsonDocument(answer.toArray()) : QJsonDocument(answer.toObject());
    printLine(QString::fromUtf8(document.toJson(QJsonDocument::Indented)).trimmed());
    return 0;
}

bool writeEndpoints(const QString &fileName, const QString &origin, QString *errorText)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        *errorText = file.errorString();
        return false;
    }
    file.write(ZuviEndpoints::allOn(QUrl(origin)).toJson());
    if (!file.commit()) {
        *errorText = file.errorString();
        return false;
    }
    return true;
}

int serve(QCoreApplication &app, const QCommandLineParser &parser)
{
    bool ok = false;
    const quint16 port = portOption(parser, &ok);
    if (!ok)
        return failWith(QStringLiteral("--port 必须是 0 到 65535 的整数"));
    ZuviDemoOptions options;
    options.seed = parser.value("seed").toULongLong(&ok);
    if (!ok)
        return failWith(QStringLiteral("--seed 必须是非负整数"));
    options.dataDirectory = parser.value("data");
    // The media sit beside the build's bin directory, where ./run makes them.
    options.mediaDirectory = parser.isSet("media")
                                 ? parser.value("media")
                                 : QDir(app.applicationDirPath()).absoluteFilePath("../media");
    options.qrLifetimeSeconds = parser.value("qr-lifetime").toDouble(&ok);
    if (!ok || options.qrLifetimeSeconds <= 0)
        return failWith(QStringLiteral("--qr-lifetime 必须是正数（秒）"));

    if (parser.isSet("verbose"))
        QLoggingCategory::setFilterRules(QStringLiteral("zuvi.demo.debug=true"));
    auto *service = new ZuviDemoService(options, ZuviScheduler::sharedScheduler(), &app);
    for (const QString &switchText : parser.values("fail")) {
        QString path;
        std::optional<ZuviDemoFailure> failure;
        QString errorText;
        if (!ZuviDemoFailureSwitches::parse(switchText, &path, &failure, &errorText))
            return failWith(errorText);
        if (failure)
            service->failures().set(path, *failure);
    }
    QString errorText;
    if (!service->start(port, &errorText))
        return failWith(QStringLiteral("无法在 127.0.0.1:%1 上启动：%2").arg(port).arg(errorText));
    QObject::connect(service, &ZuviDemoService::notice,
                     [](const QString &line) { printLine(line); });

    // The first line is for programs (tests and start-demo.sh read the port from it).
    printLine(QStringLiteral("oldzuvi-demo-service listening on %1").arg(service->origin()));
    if (parser.isSet("write-endpoints")) {
        if (!writeEndpoints(parser.value("write-endpoints"), service->origin(), &errorText))
            return failWith(QStringLiteral("无法写入端点文件：%1").arg(errorText));
        printLine(QStringLiteral("端点文件：%1").arg(parser.value("write-endpoints")));
    } else {
        printLine(QStringLiteral("端点文件内容（存为文件后用 oldzuvi --endpoints 文件 启动）："));
        printLine(
            QString::fromUtf8(ZuviEndpoints::allOn(QUrl(service->origin())).toJson()).trimmed());
    }
    if (!QFile::exists(QDir(options.mediaDirectory).filePath("demo-a-720.mp4")))
        printLine(QStringLiteral("注意：%1 里没有视频文件，先运行 demo/make-media.sh %1")
                      .arg(options.mediaDirectory));
    return app.exec();
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("oldzuvi-demo-service");
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "oldZuvi 的本机演示服务。\n"
        "  oldzuvi-demo-service [--port N] [--data DIR] [--seed S] [--write-endpoints FILE]\n"
        "  oldzuvi-demo-service announce \"文字\" [--image URL] [--dev] [--port N]\n"
        "  oldzuvi-demo-service confirm [--key KEY] [--port N]\n"
        "  oldzuvi-demo-service fail 路径 slow:毫秒|code:错误码[:消息]|broken|html|drop|off "
        "[--times N] [--port N]\n"
        "  oldzuvi-demo-service fail off [--port N]\n"
        "  oldzuvi-demo-service state [--port N]");
    parser.addHelpOption();
    parser.addOptions({
        {"port", "端口（0 表示任选空闲端口）。", "N", QString::number(ZuviEndpoints::kDemoPort)},
        {"data", "把状态保存在这个目录里。", "DIR"},
        {"seed", "内容种子：同一种子生成同样的内容。", "S", "1"},
        {"media", "视频文件目录（默认 bin 旁边的 media）。", "DIR"},
        {"write-endpoints", "把客户端用的端点文件写到这里。", "FILE"},
        {"fail", "故障开关 路径=方式[@次数]，可重复。", "PATH=MODE"},
        {"qr-lifetime", "登录二维码的有效秒数。", "SECONDS", "180"},
        {"verbose", "每个请求在标准错误输出一行。"},
        {"image", "announce：消息图片地址。", "URL"},
        {"dev", "announce：发布到开发者配置源。"},
        {"key", "confirm：要确认的 qrcode_key（默认最新的）。", "KEY"},
        {"times", "fail：只影响接下来的 N 次请求。", "N"},
    });
    parser.addPositionalArgument("command", "announce、confirm、fail、state；不写则启动服务。");
    parser.process(app);
    const QString command = parser.positionalArguments().value(0);
    if (command.isEmpty() || command == QLatin1String("serve"))
        return serve(app, parser);
    return runCommand(command, parser);
}
