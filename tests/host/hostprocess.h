// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "literals.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

/// An orva-host of the test's own, on the bus that DBUS_SYSTEM_BUS_ADDRESS names.
class HostProcess : public QProcess
{
public:
    /// Runs it with that configuration, its state in a directory of its own.
    void start(const QByteArray& config)
    {
        QFile file(m_directory.filePath("host.json"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(config) < 0)
            qFatal("no configuration");
        file.close();
        setProcessChannelMode(QProcess::MergedChannels);
        QProcess::start(QStringLiteral(ORVA_HOST), {"--config"_s, file.fileName(), "--state-dir"_s,
                                                    m_directory.filePath("state"_s)});
    }
    /// The exit status; -1 when it does not end within ten seconds or crashes.
    [[nodiscard]] int ended()
    {
        const bool inTime = state() == NotRunning || waitForFinished(10000);
        return inTime && exitStatus() == NormalExit ? exitCode() : -1;
    }
    ~HostProcess() override
    {
        kill();
        waitForFinished();
    }

private:
    QTemporaryDir m_directory;
};

/// The configuration with the worker of these tests.
inline QByteArray testWorkerConfig()
{
    return "{\"workers\": [{\"library\": \"" ORVA_TEST_WORKER "\"}]}";
}

/// True if a host serves the bus.
inline bool isServed(const QDBusConnection& bus)
{
    return bus.interface()->isServiceRegistered("org.orva.Host1"_s);
}

/// A call of the host.
inline QDBusMessage hostCall(const char* method, const QVariantList& arguments)
{
    auto message = QDBusMessage::createMethodCall("org.orva.Host1"_s, "/org/orva/Host1"_s,
                                                  "org.orva.Host1"_s, QLatin1String(method));
    message.setArguments(arguments);
    return message;
}
