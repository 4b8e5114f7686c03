#pragma once

#include <QMutex>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>

// The user-defaults store: small values that survive a restart, under the
// same key names everywhere ("ZuviCredentialCookie", "ZuviDebugLogText", ...).
// Safe to use from any thread; every write is flushed by synchronize().
class ZuviDefaults
{
public:
    // A store in an INI file of its own; tests hand every service a scratch one.
    explicit ZuviDefaults(const QString &filePath);
    ~ZuviDefaults();

    ZuviDefaults(const ZuviDefaults &) = delete;
    ZuviDefaults &operator=(const ZuviDefaults &) = delete;

    // The process-wide store. Its file is the platform's settings location
    // unless setStandardFilePath() named another before first use.
    static ZuviDefaults *standardDefaults();
    static void setStandardFilePath(const QString &filePath);

    QVariant objectForKey(const QString &key) const;
    QString stringForKey(const QString &key) const;
    bool boolForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    bool containsKey(const QString &key) const;

    void setObject(const QVariant &value, const QString &key);
    void setBool(bool value, const QString &key) { setObject(value, key); }
    void setInteger(qint64 value, const QString &key) { setObject(value, key); }
    void setString(const QString &value, const QString &key) { setObject(value, key); }
    void removeObjectForKey(const QString &key);
    void synchronize();

    QString filePath() const;

private:
    mutable QMutex m_mutex;
    std::unique_ptr<QSettings> m_settings;
};
