// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"

#include <QNetworkInterface>

#include <optional>

class NetworkListener;

/// The backend of a device whose root file system is on the network: configures nothing, lest the
/// device be cut off from it. Reports the link that carries the default route, takes every profile
/// for connected after a second, and answers scans and WPS with made-up networks.
///
/// Speaks of the interfaces "eth0" and "wlan0", whatever the worker's are called.
class Networking_LowLevel_Fake : public Networking_LowLevel
{
    Q_OBJECT
public:
    /// `listener` must outlive this object.
    explicit Networking_LowLevel_Fake(NetworkListener& listener);

    [[nodiscard]] bool scanNetworks() override;
    [[nodiscard]] bool applyProfile(const OrvaNetworkProfile& profile) override;
    [[nodiscard]] bool disconnect() override;
    bool forceWifiReconnect() override;
    [[nodiscard]] bool performWpsPbc(const CMReply<OrvaNetworkInterface>& reply) override;
    [[nodiscard]] bool performWpsPin(const QString& pin,
                                     const CMReply<OrvaNetworkInterface>& reply) override;
    bool startSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    bool stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    [[nodiscard]] QString getEthernetMAC() override;
    [[nodiscard]] QString getWirelessMAC() override;
    [[nodiscard]] OrvaNetworkInfo getNetworkState() override;
    [[nodiscard]] bool cableStatus() override;
    [[nodiscard]] bool hasWireless() override;
    [[nodiscard]] double getWirelessRssi() override;
    [[nodiscard]] InterfaceStatus interfaceStatus(const QString& interface) override;

private Q_SLOTS:
    void on_wps_timeout();
    void on_connect_delayed();
    void on_scanResults();

private:
    /// The interface that carries the default route; invalid when there is none.
    [[nodiscard]] QNetworkInterface getInterface() const;

    NetworkListener& m_listener;
    OrvaNetworkProfileType m_profileType;
    std::optional<CMReply<OrvaNetworkInterface>> m_wpsReply; ///< Of the session that runs.
};
