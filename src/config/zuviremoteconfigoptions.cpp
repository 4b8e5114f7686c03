#include "zuviremoteconfigoptions.h"

ZuviRemoteConfigOptions ZuviRemoteConfigOptions::optionsWithSources(const QStringList &sources)
{
    ZuviRemoteConfigOptions options;
    for (const QString &source : sources)
        options.sources.append(source);
    return options;
}

ZuviRemoteConfigOptions ZuviRemoteConfigOptions::optionsWithSources(const QVariantList &sources)
{
    ZuviRemoteConfigOptions options;
    options.sources = sources;
    return options;
}

QStringList ZuviRemoteConfigOptions::sanitizedSources() const
{
    QStringList result;
    for (const QVariant &source : sources) {
        if (source.typeId() != QMetaType::QString)
            continue;
        const QString trimmed = source.toString().trimmed();
        if (!trimmed.isEmpty())
            result.append(trimmed);
    }
    return result;
}

ZuviRemoteConfigOptions ZuviRemoteConfigOptions::copy() const
{
    ZuviRemoteConfigOptions result;
    for (const QString &source : sanitizedSources())
        result.sources.append(source);
    result.pollInterval = pollInterval > 0 ? pollInterval : kDefaultPollInterval;
    result.requestTimeout = requestTimeout > 0 ? requestTimeout : kDefaultRequestTimeout;
    result.cacheDirectoryPath = cacheDirectoryPath;
    return result;
}
