#include "zuvidemostate.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QSaveFile>

namespace {
constexpr int kHistoryLimit = 100;
constexpr int kWatchLaterLimit = 100;
const char kStateFileName[] = "demo-state.json";

QJsonArray entriesToJson(const QList<ZuviDemoListEntry> &entries)
{
    QJsonArray array;
    for (const ZuviDemoListEntry &entry : entries)
        array.append(QJsonArray{entry.aid, entry.at});
    return array;
}

QList<ZuviDemoListEntry> entriesFromJson(const QJsonValue &value)
{
    QList<ZuviDemoListEntry> entries;
    for (const QJsonValue &item : value.toArray()) {
        const QJsonArray pair = item.toArray();
        entries.append({qint64(pair.at(0).toDouble()), qint64(pair.at(1).toDouble())});
    }
    return entries;
}

// Moves the video to the top of the list; true when it was not there before.
bool putFirst(QList<ZuviDemoListEntry> &entries, qint64 aid, qint64 at, int limit)
{
    bool fresh = true;
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i).aid == aid) {
            entries.removeAt(i);
            fresh = false;
            break;
        }
    }
    entries.prepend({aid, at});
    while (entries.size() > limit)
        entries.removeLast();
    return fresh;
}

QJsonObject messageToJson(const ZuviDemoConfigMessage &message)
{
    return QJsonObject{{"version", message.version},
                       {"text", message.text},
                       {"image", message.image},
                       {"modifiedAt", message.modifiedAt}};
}

ZuviDemoConfigMessage messageFromJson(const QJsonValue &value,
                                      const ZuviDemoConfigMessage &fallback)
{
    const QJsonObject object = value.toObject();
    if (object.isEmpty())
        return fallback;
    ZuviDemoConfigMessage message;
    message.version = object.value("version").toInt(1);
    message.text = object.value("text").toString();
    message.image = object.value("image").toString();
    message.modifiedAt = qint64(object.value("modifiedAt").toDouble());
    return message;
}
} // namespace

ZuviDemoState::ZuviDemoState(const ZuviDemoContent *content, double qrLifetimeSeconds)
    : m_content(content), m_qrLifetime(qrLifetimeSeconds)
{
    seedLists();
    seedMessages();
}

void ZuviDemoState::seedMessages()
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    m_mainMessage = {
        1,
        QStringLiteral(
            "欢迎使用 oldZuvi 演示服务：这里的视频、弹幕和评论都是生成的，登录也只需在本机确认。"),
        m_content->pictureURL(QStringLiteral("banner-1")), now};
    m_devMessage = {1, QStringLiteral("开发者配置源：演示服务的开发者消息。"), QString(), now};
}

void ZuviDemoState::seedLists()
{
    // The account starts with a little history, a few videos to watch later
    // and two favourite folders, so that every list has something to show.
    const QList<int> order = m_content->popularOrder();
    const qint64 base = 1767225600;
    for (int i = 0; i < 12; ++i)
        m_history.append({m_content->videos().at(order.at(40 + i * 3)).aid, base - i * 5400});
    for (int i = 0; i < 5; ++i)
        m_watchLater.append({m_content->videos().at(order.at(90 + i * 5)).aid, base - i * 86400});
    ZuviDemoFolder defaults{ZuviDemoContent::kDemoMID * 100 + 1, QStringLiteral("默认收藏夹"), {}};
    for (int i = 0; i < 6; ++i)
        defaults.entries.append(
            {m_content->videos().at(order.at(10 + i * 7)).aid, base - i * 43200});
    ZuviDemoFolder study{ZuviDemoContent::kDemoMID * 100 + 2, QStringLiteral("学习资料"), {}};
    for (int i = 0; i < 3; ++i)
        study.entries.append({m_content->videos().at(order.at(150 + i)).aid, base - i * 3600});
    m_folders = {defaults, study};
}

QString ZuviDemoState::randomHex(int length)
{
    QString text;
    while (text.size() < length)
        text += QString::number(QRandomGenerator::global()->generate64(), 16);
    return text.left(length);
}

bool ZuviDemoState::attachDirectory(const QString &directory, QString *errorText)
{
    if (!QDir().mkpath(directory)) {
        *errorText = QStringLiteral("无法创建数据目录 %1").arg(directory);
        return false;
    }
    m_directory = directory;
    QFile file(QDir(directory).filePath(kStateFileName));
    if (!file.exists())
        return true;
    QJsonParseError parseError;
    const QJsonDocument document = file.open(QIODevice::ReadOnly)
                                       ? QJsonDocument::fromJson(file.readAll(), &parseError)
                                       : QJsonDocument();
    if (!document.isObject()) {
        *errorText = QStringLiteral("数据文件 %1 无法读取").arg(file.fileName());
        return false;
    }
    fromJson(document.object());
    return true;
}

void ZuviDemoState::save() const
{
    if (m_directory.isEmpty())
        return;
    QSaveFile file(QDir(m_directory).filePath(kStateFileName));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(toJson()).toJson(QJsonDocument::Indented));
        file.commit();
    }
}

QJsonObject ZuviDemoState::toJson() const
{
    QJsonArray sessions;
    for (const ZuviDemoSession &session : m_sessions)
        sessions.append(QJsonObject{{"sessdata", session.sessdata},
                                    {"csrf", session.csrf},
                                    {"ckMd5", session.ckMd5},
                                    {"mid", session.mid}});
    QJsonArray folders;
    for (const ZuviDemoFolder &folder : m_folders)
        folders.append(QJsonObject{{"id", folder.id},
                                   {"title", folder.title},
                                   {"entries", entriesToJson(folder.entries)}});
    QJsonArray liked;
    for (qint64 aid : m_liked)
        liked.append(aid);
    QJsonObject replies;
    for (auto it = m_replies.constBegin(); it != m_replies.constEnd(); ++it) {
        QJsonArray list;
        for (const QJsonObject &reply : it.value())
            list.append(reply);
        replies.insert(QString::number(it.key()), list);
    }
    QJsonObject danmaku;
    for (auto it = m_danmaku.constBegin(); it != m_danmaku.constEnd(); ++it) {
        QJsonArray list;
        for (const ZuviDemoDanmaku &item : it.value())
            list.append(QJsonObject{{"time", item.time},
                                    {"mode", item.mode},
                                    {"fontSize", item.fontSize},
                                    {"color", double(item.color)},
                                    {"sentAt", item.sentAt},
                                    {"user", item.userHash},
                                    {"id", item.id},
                                    {"text", item.text}});
        danmaku.insert(QString::number(it.key()), list);
    }
    return QJsonObject{
        {"seed", QString::number(m_content->seed())},
        {"devices", QJsonArray::fromStringList(QStringList(m_devices.begin(), m_devices.end()))},
        {"sessions", sessions},
        {"history", entriesToJson(m_history)},
        {"watchLater", entriesToJson(m_watchLater)},
        {"folders", folders},
        {"liked", liked},
        {"replies", replies},
        {"danmaku", danmaku},
        {"mainMessage", messageToJson(m_mainMessage)},
        {"devMessage", messageToJson(m_devMessage)},
        {"lastID", m_lastID},
    };
}

void ZuviDemoState::fromJson(const QJsonObject &object)
{
    for (const QJsonValue &device : object.value("devices").toArray())
        m_devices.insert(device.toString());
    for (const QJsonValue &value : object.value("sessions").toArray()) {
        const QJsonObject session = value.toObject();
        m_sessions.insert(session.value("sessdata").toString(),
                          {session.value("sessdata").toString(), session.value("csrf").toString(),
                           session.value("ckMd5").toString(),
                           qint64(session.value("mid").toDouble())});
    }
    if (object.contains("history"))
        m_history = entriesFromJson(object.value("history"));
    if (object.contains("watchLater"))
        m_watchLater = entriesFromJson(object.value("watchLater"));
    if (object.contains("folders")) {
        m_folders.clear();
        for (const QJsonValue &value : object.value("folders").toArray()) {
            const QJsonObject folder = value.toObject();
            m_folders.append({qint64(folder.value("id").toDouble()),
                              folder.value("title").toString(),
                              entriesFromJson(folder.value("entries"))});
        }
    }
    for (const QJsonValue &aid : object.value("liked").toArray())
        m_liked.insert(qint64(aid.toDouble()));
    const QJsonObject replies = object.value("replies").toObject();
    for (auto it = replies.constBegin(); it != replies.constEnd(); ++it) {
        QList<QJsonObject> list;
        for (const QJsonValue &reply : it.value().toArray())
            list.append(reply.toObject());
        m_replies.insert(it.key().toLongLong(), list);
    }
    const QJsonObject danmaku = object.value("danmaku").toObject();
    for (auto it = danmaku.constBegin(); it != danmaku.constEnd(); ++it) {
        QList<ZuviDemoDanmaku> list;
        for (const QJsonValue &value : it.value().toArray()) {
            const QJsonObject o = value.toObject();
            list.append({o.value("time").toDouble(), o.value("mode").toInt(1),
                         o.value("fontSize").toInt(25), quint32(o.value("color").toDouble()),
                         qint64(o.value("sentAt").toDouble()), o.value("user").toString(),
                         qint64(o.value("id").toDouble()), o.value("text").toString()});
        }
        m_danmaku.insert(it.key().toLongLong(), list);
    }
    m_mainMessage = messageFromJson(object.value("mainMessage"), m_mainMessage);
    m_devMessage = messageFromJson(object.value("devMessage"), m_devMessage);
    m_lastID = qint64(object.value("lastID").toDouble());
}

QPair<QString, QString> ZuviDemoState::issueDeviceIdentity()
{
    const QString hex = randomHex(32).toUpper();
    const QString buvid3 =
        QStringLiteral("%1-%2-%3-%4-%5-demo3")
            .arg(hex.mid(0, 8), hex.mid(8, 4), hex.mid(12, 4), hex.mid(16, 4), hex.mid(20, 12));
    const QString buvid4 = randomHex(24).toUpper() + "-demo4";
    m_devices.insert(buvid3);
    save();
    return {buvid3, buvid4};
}

const ZuviDemoSession *ZuviDemoState::sessionFor(const QString &sessdata) const
{
    const auto it = m_sessions.constFind(sessdata);
    return it == m_sessions.constEnd() ? nullptr : &it.value();
}

ZuviDemoQRLogin &ZuviDemoState::createQRLogin(double now)
{
    ZuviDemoQRLogin login;
    login.key = randomHex(32);
    login.createdAt = now;
    m_qrOrder.append(login.key);
    return m_qrLogins.insert(login.key, login).value();
}

int ZuviDemoState::pollQRLogin(const QString &key, double now, ZuviDemoSession *session)
{
    auto it = m_qrLogins.find(key);
    if (it == m_qrLogins.end() || it->phase == ZuviDemoQRLogin::Used ||
        now - it->createdAt > m_qrLifetime)
        return 86038;
    switch (it->phase) {
    case ZuviDemoQRLogin::Waiting:
        return 86101;
    case ZuviDemoQRLogin::Scanned:
        it->scanReported = true;
        return 86090;
    case ZuviDemoQRLogin::Confirmed:
        if (!it->scanReported) {
            it->scanReported = true;
            return 86090;
        }
        break;
    case ZuviDemoQRLogin::Used:
        break;
    }
    it->phase = ZuviDemoQRLogin::Used;
    ZuviDemoSession created;
    created.sessdata = randomHex(40);
    created.csrf = randomHex(32);
    created.ckMd5 = randomHex(16);
    created.mid = ZuviDemoContent::kDemoMID;
    m_sessions.insert(created.sessdata, created);
    save();
    *session = created;
    return 0;
}

bool ZuviDemoState::scanQRLogin(const QString &key, double now)
{
    auto it = m_qrLogins.find(key);
    if (it == m_qrLogins.end() || now - it->createdAt > m_qrLifetime)
        return false;
    if (it->phase == ZuviDemoQRLogin::Waiting)
        it->phase = ZuviDemoQRLogin::Scanned;
    return it->phase != ZuviDemoQRLogin::Used;
}

QString ZuviDemoState::confirmQRLogin(const QString &key, double now)
{
    QString chosen = key;
    if (chosen.isEmpty()) {
        for (int i = m_qrOrder.size() - 1; i >= 0 && chosen.isEmpty(); --i) {
            const ZuviDemoQRLogin &login = m_qrLogins.value(m_qrOrder.at(i));
            if ((login.phase == ZuviDemoQRLogin::Waiting ||
                 login.phase == ZuviDemoQRLogin::Scanned) &&
                now - login.createdAt <= m_qrLifetime)
                chosen = login.key;
        }
    }
    auto it = m_qrLogins.find(chosen);
    if (it == m_qrLogins.end() || now - it->createdAt > m_qrLifetime ||
        it->phase == ZuviDemoQRLogin::Used)
        return QString();
    it->phase = ZuviDemoQRLogin::Confirmed;
    return chosen;
}

void ZuviDemoState::noteWatched(qint64 aid, qint64 at)
{
    putFirst(m_history, aid, at, kHistoryLimit);
    save();
}

bool ZuviDemoState::addWatchLater(qint64 aid, qint64 at)
{
    const bool fresh = putFirst(m_watchLater, aid, at, kWatchLaterLimit);
    save();
    return fresh;
}

const ZuviDemoFolder *ZuviDemoState::folder(qint64 id) const
{
    for (const ZuviDemoFolder &folder : m_folders) {
        if (folder.id == id)
            return &folder;
    }
    return nullptr;
}

bool ZuviDemoState::addFavorite(qint64 folderID, qint64 aid, qint64 at)
{
    for (ZuviDemoFolder &folder : m_folders) {
        if (folder.id == folderID) {
            putFirst(folder.entries, aid, at, 1000);
            save();
            return true;
        }
    }
    return false;
}

bool ZuviDemoState::isFavorite(qint64 aid) const
{
    for (const ZuviDemoFolder &folder : m_folders) {
        for (const ZuviDemoListEntry &entry : folder.entries) {
            if (entry.aid == aid)
                return true;
        }
    }
    return false;
}

bool ZuviDemoState::like(qint64 aid)
{
    if (m_liked.contains(aid))
        return false;
    m_liked.insert(aid);
    save();
    return true;
}

void ZuviDemoState::addReply(qint64 aid, const QJsonObject &reply)
{
    m_replies[aid].prepend(reply);
    save();
}

void ZuviDemoState::addDanmaku(qint64 cid, const ZuviDemoDanmaku &item)
{
    m_danmaku[cid].append(item);
    save();
}

const ZuviDemoConfigMessage &ZuviDemoState::configMessage(bool developer) const
{
    return developer ? m_devMessage : m_mainMessage;
}

int ZuviDemoState::announce(bool developer, const QString &text, const QString &image, qint64 at)
{
    ZuviDemoConfigMessage &message = developer ? m_devMessage : m_mainMessage;
    message.version += 1;
    message.text = text;
    message.image = image;
    message.modifiedAt = qMax(at, message.modifiedAt + 1);
    save();
    return message.version;
}
