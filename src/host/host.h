// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "buswatchdog.h"
#include "hostconfig.h"
#include "hostcontrol.h"
#include "memorytrim.h"
#include "rootworker.h"

/// The whole host: the root, the stand-in workers, the workers from libraries and the control
/// interface.
class Host : public QObject
{
    Q_OBJECT
public:
    /// Shows itself on the bus of `connection`.
    Host(const HostConfig& config, const QDBusConnection& connection);

    /// Takes the name on the bus, loads the workers and activates what the configuration says.
    /// False, with the reason logged, where the host cannot do its work.
    [[nodiscard]] bool start();

    [[nodiscard]] RootWorker& root() { return m_root; }

Q_SIGNALS:
    /// The host cannot go on; the reason is logged.
    void failed();

private:
    void addStandIns();
    [[nodiscard]] bool addLibraries();
    void activate(const CMPath& path);

    HostConfig m_config;
    RootWorker m_root;
    HostControl m_control;
    MemoryTrim m_memory;
    BusWatchdog m_watchdog;
};
