#include "log.h"
#include "lumodadaptor.h"
#include "world/played/worldcontrol.h"
#include "worldadaptor.h"

#include <common/journalstream.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

Q_LOGGING_CATEGORY(lcLumod, "lumod")

namespace {

QString worldFileName(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "A connection daemon that plays a network instead of driving one.\n\nWithout --world, the "
        "environment variable ORVA_LUMOD_WORLD names the world file; without either the world is\n"
        "a cable and no access point."));
    const QCommandLineOption world(QStringLiteral("world"),
                                   QStringLiteral("The world to play, commented JSON."),
                                   QStringLiteral("file"));
    parser.addOption(world);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    return parser.isSet(world) ? parser.value(world) : qEnvironmentVariable("ORVA_LUMOD_WORLD");
}

/// With the journal, which has a time of its own, the priority of syslog(3) instead.
QString messagePattern()
{
    if (!leadsToJournal())
        return QStringLiteral("%{time hh:mm:ss.zzz} %{category} %{type}: %{message}");
    return QStringLiteral("%{if-debug}<7>%{endif}%{if-info}<6>%{endif}%{if-warning}<4>%{endif}"
                          "%{if-critical}<3>%{endif}%{if-fatal}<2>%{endif}%{message}");
}

std::optional<WorldDescription> describe(const QString& fileName)
{
    if (fileName.isEmpty())
        return WorldDescription();
    QString error;
    auto description = readWorldFile(fileName, &error);
    if (!description)
        qCCritical(lcLumod).noquote() << "Cannot read the world:" << error;
    return description;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lumod"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVA_VERSION));
    qSetMessagePattern(messagePattern());

    const auto description = describe(worldFileName(application));
    if (!description)
        return 1;
    if (!QDBusConnection::systemBus().isConnected()) {
        qCCritical(lcLumod).noquote()
            << "Cannot reach the system bus:" << QDBusConnection::systemBus().lastError().message();
        return 1;
    }
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
