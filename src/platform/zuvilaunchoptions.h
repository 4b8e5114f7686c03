#pragma once

#include "zuviendpoints.h"
#include "zuvierror.h"
#include "zuviidiom.h"

#include <QProcessEnvironment>
#include <QStringList>

// The options every program of the project understands at start-up:
//   --endpoints FILE   the deployment's hosts (else $OLDZUVI_ENDPOINTS, else the defaults)
//   --idiom pad|phone  the device class to lay out for
//   --settings FILE    a user-defaults store other than the standard one
// Whatever is left is handed back for the program's own use.
struct ZuviLaunchOptions {
    ZuviEndpoints endpoints = ZuviEndpoints::defaults();
    ZuviIdiom::Kind idiom = ZuviIdiom::Pad;
    QString endpointsFile;
    QString settingsFile;
    QStringList remaining;

    static bool parse(const QStringList &arguments, const QProcessEnvironment &environment,
                      ZuviLaunchOptions *options, ZuviError *error);

    // Makes the parsed values the process-wide ones.
    void apply() const;
};
