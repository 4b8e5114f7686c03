#pragma once

#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "zuvitesthttpserver.h"
#include "zuvitestsupport.h"

// What a suite needs around the code it sends through: a recording loopback
// server already listening, a scratch defaults store, and a notification
// centre and a debug log over that store. (The service client's suites add
// the client and a second host: ZuviClientTestFixture.)
struct ZuviLoopbackServices {
    ZuviLoopbackServices() { started = server.start(); }

    ZuviTestHttpServer server;
    bool started = false;
    ZuviScratchDefaults defaults;
    ZuviNotificationCenter center;
    ZuviDebugLog log{defaults.get(), &center};
};
