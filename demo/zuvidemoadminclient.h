#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariantMap>

// The commands "announce", "confirm", "fail" and "state" of the demo
// service's program: each is one request to the admin endpoints of a
// service already running on this machine.
class ZuviDemoAdminClient
{
public:
    explicit ZuviDemoAdminClient(quint16 port) : m_port(port) {}

    // Sends a form POST (or a GET with no form) and waits for the answer.
    // Returns the answer's "data" when its "code" is 0; otherwise false with
    // a message for the person at the terminal.
    bool call(const QString &path, const QVariantMap &form, QJsonValue *answer,
              QString *errorText) const;

private:
    quint16 m_port;
};
