#pragma once

#include "zuvidemocontent.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

// A signed-in browser: the session cookie's value, its CSRF token.
struct ZuviDemoSession {
    QString sessdata;
    QString csrf;
    QString ckMd5;
    qint64 mid = 0;
};

// One QR login from generation to use.
struct ZuviDemoQRLogin {
    enum Phase { Waiting, Scanned, Confirmed, Used };
    QString key;
    double createdAt = 0; // on the service's scheduler clock
    Phase phase = Waiting;
    bool scanReported = false; // the poll has said "scanned" at least once
};

// A list entry with the time it was added.
struct ZuviDemoListEntry {
    qint64 aid = 0;
    qint64 at = 0; // Unix seconds
};

struct ZuviDemoFolder {
    qint64 id = 0;
    QString title;
    QList<ZuviDemoListEntry> entries; // newest first
};

// The operator message of one configuration document.
struct ZuviDemoConfigMessage {
    int version = 1;
    QString text;
    QString image;
    qint64 modifiedAt = 0; // Unix seconds, for Last-Modified
};

// Everything the demo service remembers: sessions and device identities,
// QR logins, the demo account's history, watch later and favourite folders,
// likes, posted comments and danmaku, and the configuration messages. It
// lives in memory and, when given a directory, is saved there after each
// change and read back at start.
class ZuviDemoState
{
public:
    ZuviDemoState(const ZuviDemoContent *content, double qrLifetimeSeconds);

    // Reads the saved state of the directory, if there is one; from then on
    // every change is written there. Returns false when a saved file is unreadable.
    bool attachDirectory(const QString &directory, QString *errorText);
    void save() const;

    // --- Device identity and sessions
    QPair<QString, QString> issueDeviceIdentity();
    bool isKnownDevice(const QString &buvid3) const { return m_devices.contains(buvid3); }
    const ZuviDemoSession *sessionFor(const QString &sessdata) const;

    // --- QR login
    ZuviDemoQRLogin &createQRLogin(double now);
    // Poll answer code for a key: 86101 waiting, 86090 scanned, 86038 expired
    // or unknown, 0 confirmed (then session holds the new session). A
    // confirmed login is reported as scanned once before it succeeds, so a
    // client always sees the whole sequence.
    int pollQRLogin(const QString &key, double now, ZuviDemoSession *session);
    bool scanQRLogin(const QString &key, double now);
    // Confirms the key, or the newest login still waiting when key is empty;
    // returns the key confirmed, or an empty string.
    QString confirmQRLogin(const QString &key, double now);
    double qrLifetime() const { return m_qrLifetime; }

    // --- The demo account's lists
    const QList<ZuviDemoListEntry> &history() const { return m_history; }
    void noteWatched(qint64 aid, qint64 at);
    const QList<ZuviDemoListEntry> &watchLater() const { return m_watchLater; }
    // False when the video was already there (it moves to the top anyway).
    bool addWatchLater(qint64 aid, qint64 at);
    const QList<ZuviDemoFolder> &folders() const { return m_folders; }
    const ZuviDemoFolder *folder(qint64 id) const;
    // False when the folder does not exist.
    bool addFavorite(qint64 folderID, qint64 aid, qint64 at);
    bool isFavorite(qint64 aid) const;
    // False when the video was already liked.
    bool like(qint64 aid);
    bool isLiked(qint64 aid) const { return m_liked.contains(aid); }

    // --- Posted content
    const QList<QJsonObject> postedReplies(qint64 aid) const { return m_replies.value(aid); }
    void addReply(qint64 aid, const QJsonObject &reply);
    const QList<ZuviDemoDanmaku> postedDanmaku(qint64 cid) const { return m_danmaku.value(cid); }
    void addDanmaku(qint64 cid, const ZuviDemoDanmaku &item);
    qint64 nextID() { return ++m_lastID; }

    // --- Configuration documents ("main" and "dev")
    const ZuviDemoConfigMessage &configMessage(bool developer) const;
    int announce(bool developer, const QString &text, const QString &image, qint64 at);
    // The first message of each document, version 1; the main one carries a
    // picture of the service's own.
    void seedMessages();

private:
    void seedLists();
    QJsonObject toJson() const;
    void fromJson(const QJsonObject &object);
    static QString randomHex(int length);

    const ZuviDemoContent *m_content;
    double m_qrLifetime;
    QString m_directory;
    QSet<QString> m_devices;
    QHash<QString, ZuviDemoSession> m_sessions;
    QHash<QString, ZuviDemoQRLogin> m_qrLogins;
    QStringList m_qrOrder; // oldest first
    QList<ZuviDemoListEntry> m_history;
    QList<ZuviDemoListEntry> m_watchLater;
    QList<ZuviDemoFolder> m_folders;
    QSet<qint64> m_liked;
    QHash<qint64, QList<QJsonObject>> m_replies;     // newest first
    QHash<qint64, QList<ZuviDemoDanmaku>> m_danmaku; // in the order sent
    ZuviDemoConfigMessage m_mainMessage;
    ZuviDemoConfigMessage m_devMessage;
    qint64 m_lastID = 0;
};
