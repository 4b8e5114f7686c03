// oldzuvi-cli: the service client on the command line, for scripts, power
// users and diagnosis. See ZuviCLI for the commands and output shapes.
#include "zuvicli.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    // The same application name as the app, so that the standard settings
    // store (and with it the stored login) is the one the app reads.
    QCoreApplication::setApplicationName(QStringLiteral("oldZuvi"));
    ZuviCLI cli;
    return cli.run(QCoreApplication::arguments());
}
