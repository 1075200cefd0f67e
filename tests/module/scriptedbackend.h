// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"
#include "literals.h"

#include <QStringList>

#include <functional>

/// A backend that the test plays: records every command by its operation's name, answers as the
/// test says, and signals when the test emits.
class ScriptedBackend : public Networking_LowLevel
{
    Q_OBJECT
public:
    using SoftAp = OrvaNetworkProfileSoftApSettings;
    using WpsReply = CMReply<OrvaNetworkInterface>;

    // The commands that came.
    QStringList commands;
    QVector<OrvaNetworkProfile> profiles;
    QVector<SoftAp> startedSoftAps;
    QVector<SoftAp> stoppedSoftAps;
    QString wpsPin;
    int readouts = 0; ///< of the network's state
    /// The reply of the WPS session that runs; the test finishes it.
    WpsReply wpsReply;

    // The answers.
    /// The commands that are refused.
    QStringList refused;
    QString ethernetMac = "00:11:22:aa:bb:cc"_s;
    QString wirelessMac = "00:11:22:dd:ee:ff"_s;
    OrvaNetworkInfo state;
    bool cable = true;
    bool wireless = true;
    double rssi = -50.0;
    InterfaceStatus status = Idle;

    /// Is called inside each command, to report what a backend reports at once.
    std::function<void(const QString& command)> onCommand;

    bool scanNetworks() override { return command("scanNetworks"_s); }
    bool applyProfile(const OrvaNetworkProfile& profile) override
    {
        profiles << profile;
        return command("applyProfile"_s);
    }
    bool disconnect() override { return command("disconnect"_s); }
    bool forceWifiReconnect() override { return command("forceWifiReconnect"_s); }
    bool performWpsPbc(const WpsReply& reply) override
    {
        return startWps("performWpsPbc"_s, reply);
    }
    bool performWpsPin(const QString& pin, const WpsReply& reply) override
    {
        wpsPin = pin;
        return startWps("performWpsPin"_s, reply);
    }
    bool cancelWps() override { return command("cancelWps"_s); }
    bool startSoftAp(const SoftAp& settings) override
    {
        startedSoftAps << settings;
        return command("startSoftAp"_s);
    }
    bool stopSoftAp(const SoftAp& settings) override
    {
        stoppedSoftAps << settings;
        return command("stopSoftAp"_s);
    }
    QString getEthernetMAC() override { return ethernetMac; }
    QString getWirelessMAC() override { return wirelessMac; }
    OrvaNetworkInfo getNetworkState() override
    {
        ++readouts;
        return state;
    }
    bool cableStatus() override { return cable; }
    bool hasWireless() override { return wireless; }
    double getWirelessRssi() override { return rssi; }
    InterfaceStatus interfaceStatus(const QString&) override { return status; }

private:
    bool command(const QString& name)
    {
        commands << name;
        if (onCommand)
            onCommand(name);
        return !refused.contains(name);
    }
    bool startWps(const QString& name, const WpsReply& reply)
    {
        const bool started = command(name);
        if (started)
            wpsReply = reply;
        return started;
    }
};
