// SPDX-License-Identifier: Apache-2.0
#include "jsonfile.h"
#include "log.h"
#include "lumodadaptor.h"
#include "world/played/worldcontrol.h"
#include "world/real/realworld.h"
#include "worldadaptor.h"

#include "common/messagepattern.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

int endEvent = -1;

void on_endSignal(int)
{
    const quint64 one = 1;
    [[maybe_unused]] const auto written = ::write(endEvent, &one, sizeof one);
}

/// SIGTERM and SIGINT end the event loop, so that engines are ended and files taken back; a second
/// one ends the process.
void endOrderly(QCoreApplication& application)
{
    endEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const auto* notifier = new QSocketNotifier(endEvent, QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    struct sigaction action = {};
    action.sa_handler = on_endSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGTERM, SIGINT})
        ::sigaction(number, &action, nullptr);
}

/// The choice that the command line and the environment make.
struct Choice
{
    QString world;  ///< the file of the world to play; empty: the real one
    QString config; ///< of the real world
};

Choice choose(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The connection daemon: drives this machine's interfaces, or plays a "
                       "network.\n\nIt plays one when --world or the environment variable "
                       "ORVA_LUMOD_WORLD names a\nworld file."));
    const QCommandLineOption world(QStringLiteral("world"),
                                   QStringLiteral("The world to play, commented JSON."),
                                   QStringLiteral("file"));
    const QCommandLineOption config(
        QStringLiteral("config"),
        QStringLiteral("How to drive the real one, commented JSON (default: %1).")
            .arg(QStringLiteral(ORVA_LUMOD_CONF)),
        QStringLiteral("file"), QStringLiteral(ORVA_LUMOD_CONF));
    parser.addOptions({world, config});
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    return {parser.isSet(world) ? parser.value(world) : qEnvironmentVariable("ORVA_LUMOD_WORLD"),
            parser.value(config)};
}

int fail(const QString& why)
{
    qCCritical(lcLumod).noquote() << why;
    return 1;
}

int play(const QString& worldFile)
{
    const auto description = readWorldFile(worldFile);
    if (!description)
        return fail(QStringLiteral("Cannot read the world: ") + description.why());
    PlayedWorld world(*description);
    WorldControl daemon(world);
    new LumodAdaptor(&daemon);
    new WorldAdaptor(&daemon);
    daemon.setLogLevel(daemon.logLevel());
    if (!daemon.serve())
        return 1;
    if (!description->startMode.isEmpty())
        daemon.SetNormalMode(description->startMode);
    return QCoreApplication::exec();
}

int drive(const QString& configFile)
{
    const auto file = QFile::exists(configFile) ? readJsonFile(configFile) : QVariantMap();
    if (!file)
        return fail(QStringLiteral("Cannot read the configuration: ") + file.why());
    RealWorld world(realSettings(*file));
    if (const auto opened = world.open(); !opened)
        return fail(opened.why());
    Daemon daemon(world);
    new LumodAdaptor(&daemon);
    daemon.setLogLevel(daemon.logLevel());
    return daemon.serve() ? QCoreApplication::exec() : 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lumod"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVA_VERSION));
    qSetMessagePattern(messagePattern());
    escapeLog();

    const auto choice = choose(application);
    if (!QDBusConnection::systemBus().isConnected())
        return fail(QStringLiteral("Cannot reach the system bus: ") +
                    QDBusConnection::systemBus().lastError().message());
    endOrderly(application);
    return choice.world.isEmpty() ? drive(choice.config) : play(choice.world);
}
