// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "networksettings.h"

/// One worker that comes from a shared library.
struct WorkerConfig
{
    /// The library's file.
    QString library;
    /// The configuration that its `worker_create` is given.
    QVariantHash config;
    /// True when the host ends where the worker cannot be loaded.
    bool required = true;
};

/// The host's configuration. See `examples/host.json` for the file's form.
struct HostConfig
{
    QVector<WorkerConfig> workers;
    /// The nodes that are activated once all workers are there, in this order.
    QVector<CMPath> activate;
    /// The directory of the settings.
    QString stateDirectory = QStringLiteral("/var/lib/orva");
    QString wiredInterface = QStringLiteral("eth0");
    QString wirelessInterface = QStringLiteral("wlan0");
    qint32 webserverPort = 80;
    /// The settings with their defaults.
    QVector<SettingDefault> settings = networkSettingDefaults();
};

/// Reads a configuration: JSON, in which lines that begin with "//" are comments. Fails where
/// anything in it does not suit. Keys that nobody knows are logged.
[[nodiscard]] OrvaResult<HostConfig> readHostConfig(const QString& file);
