// SPDX-License-Identifier: Apache-2.0
#include "endsignals.h"
#include "host.h"
#include "hostlog.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <systemd/sd-daemon.h>

namespace {

ORVA_LOGGER(mainLogger, "Host")

constexpr int failure = 1;
constexpr int usageError = 2;

int refuse(const QString& text)
{
    LOG4CPLUS_ERROR(mainLogger(), text);
    return usageError;
}

int run(const HostConfig& config)
{
    EndSignals signals;
    Host host(config, QDBusConnection::systemBus());
    QObject::connect(&signals, &EndSignals::received, qApp, &QCoreApplication::quit);
    QObject::connect(&host, &Host::failed, qApp, [] { QCoreApplication::exit(failure); });
    if (!host.start())
        return failure;
    ::sd_notify(0, "READY=1");
    const int status = QCoreApplication::exec();
    LOG4CPLUS_INFO(mainLogger(), "The host ends");
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    // Files of this process, and of those that it starts, are their owner's alone.
    ::umask(S_IRWXG | S_IRWXO);
    // The keys are in this process's memory: no core dump, and nobody but root looks in.
    ::prctl(PR_SET_DUMPABLE, 0);
    ::signal(SIGPIPE, SIG_IGN);
    MemoryTrim::prepareProcess();
    // Qt's own event loop does all that is needed, in less memory than GLib's.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orva-host"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVA_VERSION));
    const HostLog log;

    const QCommandLineOption configFile(
        QStringLiteral("config"), QStringLiteral("Read the configuration from <file>."),
        QStringLiteral("file"), QStringLiteral("/etc/orva/host.json"));
    const QCommandLineOption stateDirectory(
        QStringLiteral("state-dir"),
        QStringLiteral("Keep the settings in <dir>, whatever the configuration says."),
        QStringLiteral("dir"));
    const QCommandLineOption logLevel(QStringLiteral("log-level"),
                                      QStringLiteral("Log trace, debug, info, warn or error."),
                                      QStringLiteral("level"), QStringLiteral("info"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Loads workers and shows their nodes on the system bus."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({configFile, stateDirectory, logLevel});

    if (!parser.parse(QCoreApplication::arguments()))
        return refuse(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        return refuse(QStringLiteral("There are options only, see --help"));
    const auto level = HostLog::levelOf(parser.value(logLevel));
    if (!level)
        return refuse(QStringLiteral("There is no log level \"%1\"").arg(parser.value(logLevel)));
    HostLog::setLevel(*level);

    auto config = readHostConfig(parser.value(configFile));
    if (!config) {
        LOG4CPLUS_ERROR(mainLogger(), "Couldn't use the configuration " << parser.value(configFile)
                                                                        << ": " << config.why());
        return EX_CONFIG;
    }
    if (parser.isSet(stateDirectory))
        config->stateDirectory = parser.value(stateDirectory);
    return run(*config);
}
