#include "zuviqualitypreference.h"

#include "platform/zuvidefaults.h"

const char *const ZuviQualityPreference::kModeKey = "ZuviPreferredQualityMode";
const char *const ZuviQualityPreference::kLegacyMigratedKey =
    "ZuviPreferredQualityModeLegacyMigrated";

int ZuviQualityPreference::modeIndex() const
{
    const QString key = QString::fromLatin1(kModeKey);
    const QString migratedKey = QString::fromLatin1(kLegacyMigratedKey);
    qint64 value = m_defaults->integerForKey(key);
    if (!m_defaults->boolForKey(migratedKey)) {
        // The old preference counted qualities on a longer scale.
        if (m_defaults->containsKey(key)) {
            value = value < 2 ? 0 : (value == 2 ? 1 : 2);
            m_defaults->setInteger(value, key);
        }
        m_defaults->setBool(true, migratedKey);
        m_defaults->synchronize();
    }
    return value >= 0 && value <= 2 ? int(value) : 0;
}

QList<int> ZuviQualityPreference::qualityOrder() const
{
    switch (modeIndex()) {
    case 1:
        return {32, 64, 16};
    case 2:
        return {16, 32, 64};
    default:
        return {64, 32, 16};
    }
}

QString ZuviQualityPreference::modeTitle() const
{
    return displayTitleForQuality(qualityOrder().constFirst());
}

QString ZuviQualityPreference::displayTitleForQuality(int quality)
{
    if (quality >= 64)
        return QStringLiteral("720P");
    if (quality >= 32)
        return QStringLiteral("480P");
    if (quality >= 16)
        return QStringLiteral("360P");
    return QStringLiteral("%1p").arg(quality);
}
