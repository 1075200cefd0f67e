// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/radiopermission.h"
#include "world/real/link/reallink.h"
#include "world/real/radio/radioswitch.h"
#include "world/real/radio/realscan.h"
#include "world/real/radio/realwps.h"

/// The wireless interface of this machine as a client; its carrier is an access point that is
/// joined. wpa_supplicant chooses among the known networks and tries them again and again. A scan
/// waits for a join and for a WPS session, and moves no connection.
class RealRadio : public RealLink
{
    Q_OBJECT

public:
    /// The references outlive the link.
    RealRadio(World& world, Kernel& kernel, NameServers& nameServers, const RealSettings& settings);

    /// The networks to join and the address to take. A link that stays is reported up again.
    void configure(const QVector<KnownNetwork>& networks, const std::optional<StaticIp>& ip,
                   RadioPermission permission);
    void permit(RadioPermission permission);
    /// Ends what was asked for: networks, a scan, a WPS session.
    void takeDown();
    void scan();
    void reassociate();
    /// Starts a session, by push button when `pin` is empty.
    void startWps(const QString& pin);
    void cancelWps();

    /// Begins anew to join, with all networks, where it is not joined.
    void rejoin();

    [[nodiscard]] InterfaceDetails details() const;
    /// There are networks that it is permitted to join, or WPS looks for one.
    [[nodiscard]] bool wantsToJoin() const { return wantsNetworks() || isInSession(); }
    [[nodiscard]] bool isInSession() const { return m_wps.isRunning(); }
    [[nodiscard]] bool isJoined() const { return m_joined; }
    /// The channel, of 2.4 or 5 GHz, of the access point that is joined; 0 for none.
    [[nodiscard]] int joinedChannel() const;

Q_SIGNALS:
    /// It has joined a network or has left one, or WPS has begun or ended.
    void moved();
    /// The driver does not even try to join: the radio is held on another channel.
    void refused();

private:
    void reconcile() override;
    [[nodiscard]] InterfaceStatus currentStatus() const override;
    [[nodiscard]] bool hasCarrier() const override { return m_joined; }
    void followInterface(const KernelLink& before) override;
    void left() override;

    void followSupplicant();
    void joining();
    void joined();
    void away();
    void lost();
    void load();
    void refuse(const QString& fault);
    [[nodiscard]] bool wantsNetworks() const;

    RadioSwitch m_switch;
    QTimer m_revive; ///< from the switch to the interface, which takes its time
    Supplicant m_supplicant;
    RealScan m_scan;
    RealWps m_wps;
    QVector<KnownNetwork> m_networks; ///< those that can be joined, the preferred first
    RadioPermission m_permission = RadioPermission::Leave;
    bool m_loaded = false;  ///< wpa_supplicant knows networks
    bool m_current = false; ///< and they are those that are wanted
    bool m_joined = false;
    QString m_joinedNetwork; ///< its path
};
