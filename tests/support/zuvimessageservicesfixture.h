#pragma once

#include "app/zuvisettingsviewcontroller.h"
#include "config/zuviremoteconfig.h"
#include "images/zuviimageloader.h"
#include "notifications/zuviremotenotificationpresenter.h"
#include "platform/zuvidebuglog.h"
#include "platform/zuvinotificationcenter.h"
#include "platform/zuvivirtualscheduler.h"
#include "zuvitestsupport.h"

#include <QUrl>

#include <memory>

// The services behind the operator messages, made afresh for every case of
// the suites that show them (the presenter, the message screens, settings):
// a scratch store, a notification centre, the virtual clock, the debug log,
// an image loader on a loopback server, the remote configuration and the
// presenter over all of them. A suite inherits it (after QObject) and calls
// makeServices() in init() and releaseServices() in cleanup().
struct ZuviMessageServicesFixture {
    std::unique_ptr<ZuviScratchDefaults> defaults;
    std::unique_ptr<ZuviNotificationCenter> center;
    std::unique_ptr<ZuviVirtualScheduler> scheduler;
    std::unique_ptr<ZuviDebugLog> log;
    std::unique_ptr<ZuviImageLoader> images;
    std::unique_ptr<ZuviRemoteConfig> config;
    std::unique_ptr<ZuviRemoteNotificationPresenter> presenter;

    void makeServices(const QUrl &imageServer)
    {
        defaults = std::make_unique<ZuviScratchDefaults>();
        center = std::make_unique<ZuviNotificationCenter>();
        scheduler = std::make_unique<ZuviVirtualScheduler>();
        log = std::make_unique<ZuviDebugLog>(defaults->get(), center.get());
        images = std::make_unique<ZuviImageLoader>(log.get(), ZuviEndpoints::allOn(imageServer),
                                                   nullptr);
        config = std::make_unique<ZuviRemoteConfig>(defaults->get(), center.get(), scheduler.get());
        presenter.reset(
            new ZuviRemoteNotificationPresenter({config.get(), defaults->get(), center.get(),
                                                 scheduler.get(), images.get(), log.get()}));
    }

    // The settings screen on these services.
    ZuviSettingsViewController::Services settingsServices() const
    {
        return {defaults->get(), center.get(), scheduler.get(), log.get(),
                images.get(),    config.get(), presenter.get()};
    }

    // The presenter first: it observes the configuration and loads through
    // the image loader.
    void releaseServices()
    {
        presenter.reset();
        config.reset();
        images.reset();
    }
};
