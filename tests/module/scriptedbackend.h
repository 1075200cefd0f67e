#pragma once

#include <networking_lowlevel.h>

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <functional>

/// A backend that the test plays: records every command by its operation's name, answers as the
/// test says, and signals when the test emits.
class ScriptedBackend : public Networking_LowLevel
{
    Q_OBJECT
public:
    // What was asked.
    QStringList commands;
    QVector<OrvaNetworkProfile> profiles;
    QVector<OrvaNetworkProfileSoftApSettings> startedSoftAps;
    QVector<OrvaNetworkProfileSoftApSettings> stoppedSoftAps;
    QString wpsPin;
    /// The reply of the WPS session that runs; the test finishes it.
    CMReply<OrvaNetworkInterface> wpsReply;

    // What is answered.
    /// The commands that are refused.
    QStringList refused;
    QString ethernetMac = QStringLiteral("00:11:22:aa:bb:cc");
    QString wirelessMac = QStringLiteral("00:11:22:dd:ee:ff");
    OrvaNetworkInfo state;
    bool cable = true;
    bool wireless = true;
    double rssi = -50.0;
    InterfaceStatus status = Idle;

    /// Is called inside each command, to report what a backend reports at once.
    std::function<void(const QString& command)> onCommand;

    [[nodiscard]] bool scanNetworks() override;
    [[nodiscard]] bool applyProfile(const OrvaNetworkProfile& profile) override;
    [[nodiscard]] bool disconnect() override;
    bool forceWifiReconnect() override;
    [[nodiscard]] bool performWpsPbc(const CMReply<OrvaNetworkInterface>& reply) override;
    [[nodiscard]] bool performWpsPin(const QString& pin,
                                     const CMReply<OrvaNetworkInterface>& reply) override;
    bool startSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    bool stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings) override;
    [[nodiscard]] QString getEthernetMAC() override { return ethernetMac; }
    [[nodiscard]] QString getWirelessMAC() override { return wirelessMac; }
    [[nodiscard]] OrvaNetworkInfo getNetworkState() override { return state; }
    [[nodiscard]] bool cableStatus() override { return cable; }
    [[nodiscard]] bool hasWireless() override { return wireless; }
    [[nodiscard]] double getWirelessRssi() override { return rssi; }
    [[nodiscard]] InterfaceStatus interfaceStatus(const QString&) override { return status; }

private:
    bool command(const QString& name);
    bool startWps(const QString& name, const CMReply<OrvaNetworkInterface>& reply);
};
