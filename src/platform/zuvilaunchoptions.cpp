#include "zuvilaunchoptions.h"

#include "zuvidefaults.h"

namespace {
const char *const kErrorDomain = "ZuviLaunchOptionsErrorDomain";

// Accepts "--name value" and "--name=value"; advances index past what it used.
bool takeValue(const QStringList &arguments, int *index, const QString &name, QString *value,
               ZuviError *error, bool *matched)
{
    const QString argument = arguments.at(*index);
    *matched = false;
    if (argument == name) {
        *matched = true;
        if (*index + 1 >= arguments.size()) {
            *error = ZuviError(kErrorDomain, 1, QStringLiteral("%1 需要一个参数").arg(name));
            return false;
        }
        *index += 1;
        *value = arguments.at(*index);
        return true;
    }
    if (argument.startsWith(name + "=")) {
        *matched = true;
        *value = argument.mid(name.size() + 1);
    }
    return true;
}
} // namespace

bool ZuviLaunchOptions::parse(const QStringList &arguments, const QProcessEnvironment &environment,
                              ZuviLaunchOptions *options, ZuviError *error)
{
    ZuviLaunchOptions result;
    result.endpointsFile = environment.value("OLDZUVI_ENDPOINTS");
    // The first argument is the program itself.
    for (int i = 1; i < arguments.size(); ++i) {
        bool matched = false;
        QString value;
        if (!takeValue(arguments, &i, "--endpoints", &value, error, &matched))
            return false;
        if (matched) {
            result.endpointsFile = value;
            continue;
        }
        if (!takeValue(arguments, &i, "--idiom", &value, error, &matched))
            return false;
        if (matched) {
            if (!ZuviIdiom::fromString(value, &result.idiom)) {
                *error = ZuviError(
                    kErrorDomain, 2,
                    QStringLiteral("--idiom 只能是 pad 或 phone，而不是 \"%1\"").arg(value));
                return false;
            }
            continue;
        }
        if (!takeValue(arguments, &i, "--settings", &value, error, &matched))
            return false;
        if (matched) {
            result.settingsFile = value;
            continue;
        }
        result.remaining.append(arguments.at(i));
    }
    if (!result.endpointsFile.isEmpty() &&
        !ZuviEndpoints::loadFile(result.endpointsFile, &result.endpoints, error))
        return false;
    *options = result;
    return true;
}

void ZuviLaunchOptions::apply() const
{
    ZuviEndpoints::setShared(endpoints);
    ZuviIdiom::setCurrent(idiom);
    if (!settingsFile.isEmpty())
        ZuviDefaults::setStandardFilePath(settingsFile);
}
