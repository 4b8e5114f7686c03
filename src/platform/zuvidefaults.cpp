#include "zuvidefaults.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
QString &standardPathOverride()
{
    static QString path;
    return path;
}

QString standardFilePath()
{
    if (!standardPathOverride().isEmpty())
        return standardPathOverride();
    // One fixed place for every program of the project (the app, the CLI),
    // whatever application name each one sets, so a login made in one is
    // the login the others read.
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(base.isEmpty() ? QDir::homePath() + "/.config" : base)
        .filePath("oldZuvi/defaults.ini");
}
} // namespace

ZuviDefaults::ZuviDefaults(const QString &filePath)
{
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    m_settings = std::make_unique<QSettings>(filePath, QSettings::IniFormat);
}

ZuviDefaults::~ZuviDefaults() = default;

ZuviDefaults *ZuviDefaults::standardDefaults()
{
    // Created once, on first use, and kept for the whole process.
    static ZuviDefaults *store = new ZuviDefaults(standardFilePath());
    return store;
}

void ZuviDefaults::setStandardFilePath(const QString &filePath)
{
    standardPathOverride() = filePath;
}

QVariant ZuviDefaults::objectForKey(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    return m_settings->value(key);
}

QString ZuviDefaults::stringForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    return value.isValid() ? value.toString() : QString();
}

bool ZuviDefaults::boolForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (!value.isValid())
        return false;
    // INI files give strings back; "true", "YES" and non-zero numbers are on.
    const QString text = value.toString().trimmed().toLower();
    if (text == "true" || text == "yes")
        return true;
    return text.toDouble() != 0.0;
}

qint64 ZuviDefaults::integerForKey(const QString &key) const
{
    return objectForKey(key).toString().trimmed().toLongLong();
}

double ZuviDefaults::doubleForKey(const QString &key) const
{
    return objectForKey(key).toString().trimmed().toDouble();
}

bool ZuviDefaults::containsKey(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    return m_settings->contains(key);
}

void ZuviDefaults::setObject(const QVariant &value, const QString &key)
{
    QMutexLocker lock(&m_mutex);
    if (!value.isValid())
        m_settings->remove(key);
    else
        m_settings->setValue(key, value);
}

void ZuviDefaults::removeObjectForKey(const QString &key)
{
    QMutexLocker lock(&m_mutex);
    m_settings->remove(key);
}

void ZuviDefaults::synchronize()
{
    QMutexLocker lock(&m_mutex);
    m_settings->sync();
}

QString ZuviDefaults::filePath() const
{
    QMutexLocker lock(&m_mutex);
    return m_settings->fileName();
}
