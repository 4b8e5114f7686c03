#include "zuvidemofailureswitches.h"

#include <QJsonObject>
#include <QRegularExpression>

QString ZuviDemoFailure::modeName(Mode mode)
{
    switch (mode) {
    case Slow:
        return QStringLiteral("slow");
    case ServiceError:
        return QStringLiteral("code");
    case BrokenBody:
        return QStringLiteral("broken");
    case HtmlError:
        return QStringLiteral("html");
    case Drop:
        return QStringLiteral("drop");
    }
    return QString();
}

bool ZuviDemoFailureSwitches::parse(const QString &text, QString *path,
                                    std::optional<ZuviDemoFailure> *failure, QString *errorText)
{
    const int equals = text.indexOf('=');
    if (equals <= 0 || !text.startsWith('/')) {
        *errorText =
            QStringLiteral("故障开关要写成 路径=方式，例如 /x/web-interface/popular=code:-412");
        return false;
    }
    *path = text.left(equals);
    QString rest = text.mid(equals + 1);
    int times = -1;
    const int at = rest.lastIndexOf('@');
    if (at >= 0) {
        bool ok = false;
        times = rest.mid(at + 1).toInt(&ok);
        if (!ok || times < 1) {
            *errorText = QStringLiteral("次数必须是正整数：%1").arg(text);
            return false;
        }
        rest = rest.left(at);
    }
    if (!parseMode(rest, failure, errorText))
        return false;
    if (*failure)
        (*failure)->remaining = times;
    return true;
}

bool ZuviDemoFailureSwitches::parseMode(const QString &text,
                                        std::optional<ZuviDemoFailure> *failure, QString *errorText)
{
    const QString mode = text.section(':', 0, 0).trimmed();
    const QString argument = text.section(':', 1, 1).trimmed();
    ZuviDemoFailure result;
    bool ok = true;
    if (mode == QLatin1String("off")) {
        failure->reset();
        return true;
    } else if (mode == QLatin1String("slow")) {
        result.mode = ZuviDemoFailure::Slow;
        if (!argument.isEmpty())
            result.delayMs = argument.toInt(&ok);
        ok = ok && result.delayMs >= 0;
    } else if (mode == QLatin1String("code")) {
        result.mode = ZuviDemoFailure::ServiceError;
        if (!argument.isEmpty())
            result.code = argument.toInt(&ok);
        ok = ok && result.code != 0;
        result.message = text.section(':', 2);
    } else if (mode == QLatin1String("broken")) {
        result.mode = ZuviDemoFailure::BrokenBody;
    } else if (mode == QLatin1String("html")) {
        result.mode = ZuviDemoFailure::HtmlError;
    } else if (mode == QLatin1String("drop")) {
        result.mode = ZuviDemoFailure::Drop;
    } else {
        ok = false;
    }
    if (!ok) {
        *errorText = QStringLiteral("不认识的故障方式：%1（可用 "
                                    "slow:毫秒、code:错误码[:消息]、broken、html、drop、off）")
                         .arg(text);
        return false;
    }
    *failure = result;
    return true;
}

void ZuviDemoFailureSwitches::set(const QString &path, const ZuviDemoFailure &failure)
{
    m_switches.insert(path, failure);
}

void ZuviDemoFailureSwitches::clear(const QString &path)
{
    m_switches.remove(path);
}

QString ZuviDemoFailureSwitches::keyFor(const QString &requestPath) const
{
    if (m_switches.contains(requestPath))
        return requestPath;
    static const QRegularExpression legacyDanmaku(QStringLiteral("^/\\d+\\.xml$"));
    if (legacyDanmaku.match(requestPath).hasMatch() && m_switches.contains("/{cid}.xml"))
        return QStringLiteral("/{cid}.xml");
    // The longest prefix switch wins.
    QString best;
    for (auto it = m_switches.constBegin(); it != m_switches.constEnd(); ++it) {
        const QString &key = it.key();
        if (key.endsWith('*') && requestPath.startsWith(key.chopped(1)) && key.size() > best.size())
            best = key;
    }
    return best;
}

std::optional<ZuviDemoFailure> ZuviDemoFailureSwitches::take(const QString &requestPath)
{
    if (m_switches.isEmpty())
        return std::nullopt;
    const QString key = keyFor(requestPath);
    auto it = m_switches.find(key);
    if (key.isEmpty() || it == m_switches.end())
        return std::nullopt;
    const ZuviDemoFailure failure = it.value();
    if (it->remaining > 0 && --it->remaining == 0)
        m_switches.erase(it);
    return failure;
}

QJsonArray ZuviDemoFailureSwitches::describe() const
{
    QJsonArray list;
    for (auto it = m_switches.constBegin(); it != m_switches.constEnd(); ++it) {
        QJsonObject entry{{"path", it.key()},
                          {"mode", ZuviDemoFailure::modeName(it->mode)},
                          {"remaining", it->remaining}};
        if (it->mode == ZuviDemoFailure::Slow)
            entry.insert("delayMs", it->delayMs);
        if (it->mode == ZuviDemoFailure::ServiceError) {
            entry.insert("code", it->code);
            entry.insert("message", it->message);
        }
        list.append(entry);
    }
    return list;
}
