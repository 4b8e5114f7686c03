#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

// What the configuration service is started with. The service always works
// on copy(), which cleans the sources and replaces non-positive times by
// their defaults.
struct ZuviRemoteConfigOptions {
    static constexpr double kDefaultPollInterval = 14400; // four hours
    static constexpr double kDefaultRequestTimeout = 30;

    // Source URLs, tried in order; entries that are not strings are ignored.
    QVariantList sources;
    double pollInterval = kDefaultPollInterval;     // seconds between background refreshes
    double requestTimeout = kDefaultRequestTimeout; // seconds per request
    // Folder of the two cache files; empty means the default folder.
    QString cacheDirectoryPath;

    static ZuviRemoteConfigOptions optionsWithSources(const QStringList &sources);
    static ZuviRemoteConfigOptions optionsWithSources(const QVariantList &sources);

    // The string entries, trimmed, without the ones left empty; order and
    // duplicates kept.
    QStringList sanitizedSources() const;
    // Sanitized sources, positive times (defaults where not) and the same folder.
    ZuviRemoteConfigOptions copy() const;
};
