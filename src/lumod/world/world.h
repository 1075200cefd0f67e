// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"
#include "world/worldtypes.h"

#include <QObject>

/// The network that the daemon's protocol half drives: interfaces, a radio, a cable and soft access
/// points.
///
/// Everything a world learns comes as a signal; commands return at once. Announcements to clients
/// are the daemon's business, so a world knows nothing of D-Bus. All on one thread.
class World : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The names of the interfaces that exist.
    [[nodiscard]] virtual QStringList interfaces() const = 0;
    /// Kind `Absent` for a name that does not exist.
    [[nodiscard]] virtual InterfaceDetails details(const QString& interface) const = 0;

    /// Reports the cable and each interface's status once.
    virtual void announce() = 0;
    /// Client mode: brings interfaces up and down as `configuration` says. A link that stays as it
    /// is is reported `connected` again.
    virtual void bringUp(const NetworkConfiguration& configuration) = 0;
    /// Takes all interfaces down, the soft access points too.
    virtual void takeDown() = 0;
    /// Scans as soon as the radio is free; ends in `scanned`.
    virtual void scan() = 0;
    /// Leaves the access point and joins afresh.
    virtual void reassociate() = 0;
    /// Starts a WPS session, by `pin` or, when that is empty, by push button; replaces one that
    /// runs.
    virtual void startWps(const QString& pin) = 0;
    /// Fails the WPS session that runs, if any.
    virtual void cancelWps() = 0;
    /// Starts or restarts the soft access point; ends in `connected`. Refused when a program for it
    /// is missing.
    virtual Result<> startSoftAp(const QString& interface, const SoftApSettings& settings) = 0;
    virtual void stopSoftAp(const QString& interface) = 0;

Q_SIGNALS:
    void connected(const QString& interface);
    void disconnecting(const QString& interface);
    void disconnected(const QString& interface);
    void addressesChanged();
    void statusChanged(const QString& interface, InterfaceStatus status);
    void cableChanged(bool plugged);
    void scanned(const QVector<ScannedNetwork>& networks);
    void authenticationFailed(const QString& ssid, const QString& description);
    /// Something else failed; `description` is for a person.
    void failed(const QString& description);
    /// The soft access point does not come up, and is tried further; beside `failed`.
    void softApFailed(const QString& interface, const QString& description);
    void stationJoined(const QString& hwAddress);
    void stationLeft(const QString& hwAddress);
    void wpsSucceeded(const WpsCredentials& credentials);
    void wpsFailed(const QString& message);
};
