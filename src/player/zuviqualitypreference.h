#pragma once

#include <QList>
#include <QString>

class ZuviDefaults;

// The user's preferred picture quality, kept in the defaults as a mode
// (0 = 720P first, 1 = 480P, 2 = 360P), and the order in which the video
// screen asks for qualities because of it. A preference saved on the older,
// longer scale is converted once.
class ZuviQualityPreference
{
public:
    static const char *const kModeKey;
    static const char *const kLegacyMigratedKey;

    explicit ZuviQualityPreference(ZuviDefaults *defaults) : m_defaults(defaults) {}

    int modeIndex() const;
    QList<int> qualityOrder() const;
    // The title of the first quality asked for ("720P" by default).
    QString modeTitle() const;
    static QString displayTitleForQuality(int quality);

private:
    ZuviDefaults *m_defaults;
};
