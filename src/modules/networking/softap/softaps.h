// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"
#include "core/orvaresult.h"
#include "life.h"
#include "softap/softap.h"
#include "softap/softapstations.h"

#include <QTimer>

/// The soft access points, which several parts of the device may ask for at a time.
///
/// Each requester has a name and its own wishes. The access point of an interface runs with what
/// all its live requests come to, and stops with the last of them. A request that changes what runs
/// is answered when the interface is up, any other one at once. Signals tell of the need of the
/// radio and of the links.
class SoftAps : public QObject
{
    Q_OBJECT
public:
    /// `nodes` has those of the live requests and of the connected stations; `ownName` is the name
    /// by which the device itself asks. Backend and life must outlive this object.
    SoftAps(const CMNodes& nodes, Networking_LowLevel& backend, const NetworkingLife& life,
            const QString& ownName, QObject* parent);

    /// Reads which interfaces there are and how they are configured, from the settings. `mac` tells
    /// the SSIDs of devices apart.
    void readSoftApConfiguration(const QString& mac);
    /// The name by which the device itself asks.
    [[nodiscard]] const QString& ownName() const { return m_ownName; }
    /// The interfaces that the configuration names, in its order.
    [[nodiscard]] QStringList softapInterfaces() const { return m_softApInterfaces; }

    /// The link of an interface went up or down.
    void setLinkStatus(const QString& interface, bool up);
    /// Fails what waits for an interface, whose requests stay: it may come up yet.
    void on_lowlevel_SoftApError(const QString& interface, const QString& description);
    /// The link of an interface is in between.
    void setDisconnecting(const QString& interface);
    /// The interfaces that are in between.
    [[nodiscard]] QStringList disconnectingInterfaces() const;
    /// The state of all links together: connected where one is, else in between where one is.
    [[nodiscard]] OrvaNetworkState calculateSoftApState() const;

    /// Drops all requests, and stops what runs. Those that wait are told so.
    void clearSoftAp();

Q_SIGNALS:
    /// Some access point needs the radio, or none does. May be told again without a change.
    void wifiNeeded(bool needed);
    /// A link changed; carries `calculateSoftApState()`.
    void stateChanged(const OrvaNetworkState& state);

public Q_SLOTS:
    void on_requestSoftAp_req(const CMSetDataRequest& request);
    void on_revokeSoftAp_req(const CMSetDataRequest& request);
    void on_softApTimeoutTimer_timeout();

private:
    [[nodiscard]] OrvaResult<void> check(const OrvaNetworkProfileSoftApRequest& request) const;
    [[nodiscard]] OrvaResult<void> checkInterface(const QString& interface) const;
    /// Records the request, or drops it, and tells the backend what that changes. False where that
    /// is nothing.
    bool setSoftAp(const OrvaNetworkProfileSoftApRequest& request, bool enable);
    /// Has the live request end with its client, where that is asked for.
    void bind(const CMSetDataRequest& request, const OrvaNetworkProfileSoftApRequest& softAp);
    bool updateSoftAp(const QString& interface);
    bool stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings);
    void answerPending(const QString& interface, const OrvaResult<void>& outcome = {});
    void failPending(const QString& interface, const char* text);
    void scheduleSoftApTimeoutTimer();
    void setLink(const QString& interface, OrvaNetworkState state);
    /// Publishes the live requests once, when the event loop has done what is queued.
    void publishSoftApRequests();
    void publishSoftApRequestsNow();

    Networking_LowLevel& m_lowlevel;
    const NetworkingLife& m_life;
    const QString m_ownName;
    SoftApStations m_stations;
    CMValueNode* const m_softApRequestsNode;
    /// In the order of the configuration, which the map by names does not keep.
    QStringList m_softApInterfaces;
    SoftApsByInterface m_softAps;
    bool m_softApRequestsChanged = false; ///< Their publication is queued.
    QTimer m_softApTimeoutTimer{this};
};
