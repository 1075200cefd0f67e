// SPDX-License-Identifier: Apache-2.0
#include "log.h"
#include "setuppage.h"

#include "common/messagepattern.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusError>

#include <csignal>

#include <sys/prctl.h>
#include <sysexits.h>

Q_LOGGING_CATEGORY(lcWeb, "web")

namespace {

QString configFile(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Serves the page by which people set the device up."));
    const QCommandLineOption config(QStringLiteral("config"),
                                    QStringLiteral("Read the settings from <file>."),
                                    QStringLiteral("file"), QStringLiteral("/etc/orva/web.json"));
    parser.addOption(config);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    return parser.value(config);
}

} // namespace

int main(int argc, char** argv)
{
    // Keys pass through this process's memory: no core dump, and nobody but root looks in.
    ::prctl(PR_SET_DUMPABLE, 0);
    ::signal(SIGPIPE, SIG_IGN);
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orva-web"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVA_VERSION));
    qSetMessagePattern(messagePattern());

    const QString file = configFile(application);
    const auto settings = readWebSettings(file);
    if (!settings) {
        qCCritical(lcWeb).noquote() << "Couldn't use the settings" << file << settings.why();
        return EX_CONFIG;
    }
    auto bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) {
        qCCritical(lcWeb).noquote() << "No system bus:" << bus.lastError().message();
        return 1;
    }
    // The connection never comes back by itself: the program's starter starts it anew.
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                &application, SLOT(quit()));
    SetupPage page(bus, *settings);
    QObject::connect(&page, &SetupPage::failed, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}
