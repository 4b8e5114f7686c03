#include "zuviimageassets.h"

#include <QFile>

namespace {
const char *const kResourceFolder = ":/zuvi/images/";

QString resourcePathForName(const QString &name)
{
    return QString::fromLatin1(kResourceFolder) + name + QStringLiteral(".svg");
}
} // namespace

QUrl ZuviImageAssets::urlForImageNamed(const QString &name)
{
    if (!hasImageNamed(name))
        return {};
    return QUrl(QStringLiteral("qrc") + resourcePathForName(name));
}

bool ZuviImageAssets::hasImageNamed(const QString &name)
{
    // A name with a path separator would reach outside the picture folder.
    if (name.isEmpty() || name.contains('/'))
        return false;
    return QFile::exists(resourcePathForName(name));
}
