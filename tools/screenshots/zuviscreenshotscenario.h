#pragma once

#include <QCommandLineParser>
#include <QMap>
#include <QString>

#include <functional>

class ZuviAppDelegate;
class QQuickWindow;

// One way of bringing the running application to a state worth a picture.
// Each screen adds its scenarios in a file of its own
// (zuviscreenshot<area>.cpp) with a static ZuviScreenshotScenario::Registrar,
// so that screens never edit each other's shots; the tool picks one with
// --scenario NAME.
class ZuviScreenshotScenario
{
public:
    // What a scenario works with. save() takes the picture after the settle
    // time and ends the program; whenReady() polls a condition on the main
    // loop and gives up (ending the program with an error) after timeoutMs.
    struct Context {
        ZuviAppDelegate *delegate = nullptr;
        QQuickWindow *window = nullptr;
        const QCommandLineParser *parser = nullptr;
        QString argument; // the value of --argument, for scenarios that take one
        std::function<void()> save;
        std::function<void(std::function<bool()>, std::function<void()>, int timeoutMs)> whenReady;
    };
    using Run = std::function<void(const Context &)>;

    struct Registrar {
        Registrar(const QString &name, Run run) { scenarios().insert(name, std::move(run)); }
    };

    static QMap<QString, Run> &scenarios()
    {
        static QMap<QString, Run> registry;
        return registry;
    }
};
