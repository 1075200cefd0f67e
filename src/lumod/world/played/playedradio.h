// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/playedlink.h"
#include "world/played/playedwps.h"
#include "world/radiopermission.h"

/// The wireless interface as a client: it scans, chooses among the known networks by priority,
/// joins, fails with a wrong key as a real one does, and runs WPS. One thing at a time: a scan
/// waits for a join and a join for a scan or a session; a link that is up stays up meanwhile.
class PlayedRadio : public PlayedLink
{
    Q_OBJECT

public:
    PlayedRadio(const QString& name, World& world, const WorldDescription& description);

    /// The networks to join and the address to take. A link that stays is reported up again.
    void configure(const QVector<KnownNetwork>& networks, const std::optional<StaticIp>& ip,
                   RadioPermission permission);
    void permit(RadioPermission permission);
    /// The description's access points have changed.
    void accessPointsChanged();
    void scan();
    void reassociate();
    /// The networks that a scan finds now.
    [[nodiscard]] QVector<ScannedNetwork> seenNetworks() const;
    [[nodiscard]] PlayedWps& wps() { return m_wps; }
    [[nodiscard]] InterfaceDetails details() const;

private:
    /// A network with the access point through which it is joined.
    struct Choice
    {
        KnownNetwork network;
        QString bssid;
    };

    void reconcile() override;
    [[nodiscard]] InterfaceStatus currentStatus() const override;
    [[nodiscard]] std::optional<Lease> askLease() const override;
    void associated() override;
    void retry() override;
    void leaseRefused() override;

    void startScan();
    void finishScan();
    void block();
    [[nodiscard]] std::optional<Choice> choose() const;
    [[nodiscard]] QString bestAccessPoint(const KnownNetwork& network) const;
    /// The access point joined or being joined; null when it is gone.
    [[nodiscard]] const AccessPoint* target() const;
    [[nodiscard]] bool isStill(const std::optional<Choice>& choice) const;

    QVector<KnownNetwork> m_networks; ///< highest priority first
    std::optional<StaticIp> m_ip;
    RadioPermission m_permission = RadioPermission::Leave;
    Choice m_choice;
    QStringList m_blocked; ///< SSIDs that have just failed
    bool m_scanWanted = false;
    QTimer m_scan;
    PlayedWps m_wps;
};
