// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "boundprocess.h"

#include <QDBusConnection>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A dbus-daemon of a test's own, which plays the system bus for this process and for what it
/// starts.
///
/// The daemon ends with the object, and also when the test itself is killed. A service that the bus
/// activates inherits this process's environment as it is at `start()`.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    Q_DISABLE_COPY(PrivateBus)

    /// Makes the bus start `commandLine` (absolute program, then arguments, split at blanks) when
    /// somebody speaks to `name`. May be called before or after `start()`.
    void addService(const QString& name, const QString& commandLine);

    /// Starts the daemon and points `DBUS_SYSTEM_BUS_ADDRESS` of this process at it; call it before
    /// the first `QDBusConnection::systemBus()`. After `stop()` the same address is served again.
    /// False, with a warning, when the daemon does not come up within 10 s.
    [[nodiscard]] bool start();

    /// Kills the daemon, as a bus that crashes; the address stays.
    void stop();

    /// The address of the bus, known before it runs.
    [[nodiscard]] QString address() const;

    /// A further connection to the bus, as another client has it. Disconnect it by `label` when
    /// done.
    [[nodiscard]] QDBusConnection connection(const QString& label) const;

private:
    [[nodiscard]] QString path(const char* name) const;
    void writeConfiguration() const;

    QTemporaryDir m_directory;
    BoundProcess m_daemon;
};
