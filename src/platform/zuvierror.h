#pragma once

#include <QMetaType>
#include <QString>

// A failure as a value. The default-constructed error is "no error"; every
// completion in the system receives one of these beside its result.
struct ZuviError {
    QString domain;
    int code = 0;
    QString message;

    ZuviError() = default;
    ZuviError(QString errorDomain, int errorCode, QString errorMessage)
        : domain(std::move(errorDomain)), code(errorCode), message(std::move(errorMessage))
    {
    }

    bool isNull() const { return domain.isEmpty() && code == 0 && message.isEmpty(); }
    bool hasError() const { return !isNull(); }

    // The user-facing text, the counterpart of a platform error's description.
    QString localizedDescription() const { return message; }

    bool operator==(const ZuviError &other) const
    {
        return domain == other.domain && code == other.code && message == other.message;
    }
    bool operator!=(const ZuviError &other) const { return !(*this == other); }
};

Q_DECLARE_METATYPE(ZuviError)
