// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>

/// The driver of a backend: answers what the backend asks, and hears what its signals do not say.
///
/// A backend knows nothing else above it. The listener outlives the backend and lives on its
/// thread.
class NetworkListener
{
public:
    /// The name of the wired interface.
    [[nodiscard]] virtual QString wiredInterface() const = 0;
    /// The name of the wireless interface.
    [[nodiscard]] virtual QString wirelessInterface() const = 0;
    /// The names of the soft-AP interfaces, in the order of their configuration.
    [[nodiscard]] virtual QStringList softapInterfaces() const = 0;
    /// The wired, wireless and soft-AP interfaces that are in between, in no order.
    [[nodiscard]] virtual QStringList disconnectingInterfaces() const = 0;

    /// The link of an interface went up or down.
    virtual void setLinkStatus(const QString& interface, bool up) = 0;
    /// An interface is being taken down.
    virtual void setDisconnecting(const QString& interface) = 0;
    /// The cable was plugged in or pulled.
    virtual void setCurrentCableStatus(bool connected) = 0;

protected:
    NetworkListener() = default;
    ~NetworkListener() = default;
    Q_DISABLE_COPY(NetworkListener)
};
