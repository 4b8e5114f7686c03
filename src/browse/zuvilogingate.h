#pragma once

#include "platform/zuvierror.h"

#include <QObject>

#include <functional>

class ZuviAPIClient;

// The account check in front of the tabs that only work for a signed-in user
// (the ranking and the following feed). With a stored credential cookie the
// action runs at once; without one the gate asks the service who is signed in
// and either runs the action or tells its screen to show the login-required
// state. One check runs at a time: an action asked for while one runs is
// dropped, because the running check ends in a reload anyway.
class ZuviLoginGate : public QObject
{
    Q_OBJECT
public:
    // What the screen shows while the gate decides and when it refuses.
    struct Handlers {
        std::function<void()> showChecking;
        std::function<void()> showLoginRequired;
        std::function<void(const ZuviError &)> showCheckFailed;
    };

    ZuviLoginGate(ZuviAPIClient *client, Handlers handlers, QObject *parent = nullptr);

    void performWhenLoggedIn(std::function<void()> action);
    bool isCheckingLoginState() const { return m_checking; }

    // A failure that means "nobody is signed in": code -101, no description,
    // or a description naming a missing or expired login.
    static bool isLoginRequiredError(const ZuviError &error);

private:
    ZuviAPIClient *m_client;
    Handlers m_handlers;
    bool m_checking = false;
};
