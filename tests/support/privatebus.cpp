// SPDX-License-Identifier: Apache-2.0
#include "privatebus.h"

#include <QDebug>
#include <QDir>
#include <QFile>

namespace {
constexpr int startLimit = 10000; // ms

void write(const QString& fileName, const QString& text)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(fileName));
}
} // namespace

PrivateBus::PrivateBus()
{
    QDir(m_directory.path()).mkdir(QStringLiteral("services"));
    writeConfiguration();
}

PrivateBus::~PrivateBus()
{
    stop();
}

QString PrivateBus::path(const char* name) const
{
    return m_directory.filePath(QLatin1String(name));
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + path("bus");
}

void PrivateBus::writeConfiguration() const
{
    write(path("bus.conf"), QStringLiteral(R"(<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_replies_per_connection">16384</limit>
</busconfig>
)")
                                .arg(address(), path("services")));
}

void PrivateBus::addService(const QString& name, const QString& commandLine)
{
    write(path("services/") + name + QStringLiteral(".service"),
          QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2\nUser=root\n").arg(name, commandLine));
}

bool PrivateBus::start()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address().toLocal8Bit());
    QFile::remove(path("bus"));
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + path("bus.conf"), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
    // The address is printed once the socket is served.
    if (m_daemon.waitForStarted(startLimit) && m_daemon.waitForReadyRead(startLimit))
        return true;
    qWarning() << "dbus-daemon did not start:" << m_daemon.errorString();
    return false;
}

void PrivateBus::stop()
{
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    m_daemon.kill();
    m_daemon.waitForFinished(startLimit);
}

QDBusConnection PrivateBus::connection(const QString& label) const
{
    return QDBusConnection::connectToBus(address(), label);
}
