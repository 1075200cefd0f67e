// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/lumo/restartbackoff.h"
#include "backend/networkinglowlevel.h"

#include <QElapsedTimer>
#include <QHash>
#include <QMap>
#include <QSet>
#include <QTimer>

#include <optional>

class BoundedCalls;
class NetworkListener;
class QDBusMessage;
class WifiDaemonProxy;
class org_freedesktop_dbus;

/// The backend of a device: a client of the connection daemon `lumod` on the system bus.
///
/// Commands go to the daemon without waiting for anything, in the order in which they are given.
/// Its signals become this class's signals or calls on the listener. Questions wait 2 s at most
/// (BoundedCalls).
///
/// The daemon's absence is a state, not an error: its name is watched; when it is lost the bus is
/// made to start it again, and its own signal `Started` has the profile and the soft access points
/// applied anew.
class Networking_LowLevel_LUMO : public Networking_LowLevel
{
    Q_OBJECT
public:
    /// `listener` must outlive this object.
    explicit Networking_LowLevel_LUMO(NetworkListener& listener);
    ~Networking_LowLevel_LUMO() override;

    bool scanNetworks() override;
    bool applyProfile(const OrvaNetworkProfile& profile) override;
    bool disconnect() override;
    bool forceWifiReconnect() override;
    bool performWpsPbc(const CMReply<OrvaNetworkInterface>& reply) override;
    bool performWpsPin(const QString& pin, const CMReply<OrvaNetworkInterface>& reply) override;
    bool cancelWps() override;
    bool startSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    bool stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    QString getEthernetMAC() override;
    QString getWirelessMAC() override;
    OrvaNetworkInfo getNetworkState() override;
    bool cableStatus() override;
    bool hasWireless() override;
    double getWirelessRssi() override;
    InterfaceStatus interfaceStatus(const QString& interface) override;
    void forgetScan() override { m_scanning = false; }

private Q_SLOTS:
    // Presence (backend/lumo/lumopresence.cpp).
    void on_cableStatus_init();
    void on_nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);
    void on_restartTimer_timeout();
    void on_calls_askAgain();
    void on_lumo_Started();

    // The daemon's signals (backend/lumo/lumoevents.cpp).
    void on_lumo_Connected(const QString& interface);
    void on_lumo_Disconnected(const QString& interface);
    void on_lumo_Disconnecting(const QString& interface);
    void on_lumo_AuthError(const QString& ssid, const QString& description);
    void on_lumo_Error(const QString& description);
    void on_lumo_InterfaceStatus(const QString& interface, int status);
    void on_lumo_CableStatus(bool CablePluggedIn);
    void on_lumo_ScanResults(const QVariantMap& Results);
    void on_lumo_WpsCredentials(const QVariantMap& map);
    void on_lumo_WpsError(const QString& Message);
    void on_wpsTimer_timeout();

private:
    void connectDaemon();

    [[nodiscard]] static QString propertiesInterface();
    [[nodiscard]] QDBusMessage createCall(const QString& interface, const QString& method,
                                          const QVariantList& arguments) const;

    // Commands.
    void send(const QString& interface, const QString& method, const QVariantList& arguments);
    void send(const QString& method, const QVariantList& arguments = {});
    void writeProperty(const QString& property, const QVariantMap& value);
    void sendStartSoftAp(const OrvaNetworkProfileSoftApSettings& settings);
    [[nodiscard]] bool startWps(const CMReply<OrvaNetworkInterface>& reply);
    [[nodiscard]] CMReply<OrvaNetworkInterface> endWps();

    // Questions.
    [[nodiscard]] QDBusMessage ask(const QString& interface, const QString& method,
                                   const QVariantList& arguments);
    [[nodiscard]] std::optional<QVariantMap> askDetails(const QString& interface);
    [[nodiscard]] QVariantMap details(const QString& interface);
    [[nodiscard]] QString mode();
    /// In alphabetical order.
    [[nodiscard]] QStringList connectedInterfaces() const;
    void noteAlreadyConnected(const QString& interface, const QString& remark);

    NetworkListener& m_listener;
    WifiDaemonProxy* const m_daemon;
    org_freedesktop_dbus* const m_bus;
    BoundedCalls* const m_calls;

    // The daemon is told this again when it has started anew.
    OrvaNetworkProfile m_appliedProfile;
    QMap<QString, OrvaNetworkProfileSoftApSettings> m_softAps;
    bool m_scanning = false;
    bool m_replaying = false; ///< The daemon is being told again.

    // WPS: the session that runs, and when it is given up.
    CMReply<OrvaNetworkInterface> m_wpsReply;
    bool m_wpsRunning = false;
    QTimer m_wpsTimer;

    // The daemon said this.
    QHash<QString, int> m_interfaceStatuses;
    /// The links, soft APs included, that end when the daemon has started anew. The listener does
    /// not know those that were up before it listened.
    QSet<QString> m_interfacesConnected;

    // The daemon's losses, and when it is made to start again.
    QElapsedTimer m_clock;
    RestartBackoff m_restartBackoff;
    QTimer m_restartTimer;
};
