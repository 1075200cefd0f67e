// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmpath.h"
#include "core/orvavalue.h"
#include "network/networkenums.h"
#include "network/softaprecords.h"

/// One address of an interface, a gateway or a name server.
class ORVA_API OrvaNetworkAddress : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkAddress)
    /// The address as text, without prefix.
    ORVA_FIELD(QString, ip, Ip);
    /// Prefix length: 0 to 32 for IPv4, 0 to 128 for IPv6.
    ORVA_FIELD(qint32, prefix, Prefix);
    /// The protocol of `ip`: IPv4 or IPv6.
    ORVA_FIELD(OrvaNetworkAddressProtocol, protocol, Protocol);
    /// The reach of the address.
    ORVA_FIELD(OrvaNetworkAddressScope, scope, Scope);
    /// True if the address was obtained by DHCP.
    ORVA_FIELD(bool, dhcp, Dhcp);
};

/// One configured interface or network of a profile.
class ORVA_API OrvaNetworkInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkInterface)
    /// Network name (wireless).
    ORVA_FIELD(QString, ssid, Ssid);
    /// Hardware address of the access point (wireless).
    ORVA_FIELD(QString, bssid, Bssid);
    /// Pre-shared key or passphrase; published as "****".
    ORVA_FIELD(QString, key, Key);
    /// Security of the network; decides which keys are valid (`orvaNetworkIsKeyValid`).
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// Address by DHCP when true, else from the static fields below.
    ORVA_FIELD(bool, dhcp, Dhcp);
    /// Static address.
    ORVA_FIELD(QString, ip, Ip);
    /// Static netmask, dotted.
    ORVA_FIELD(QString, netmask, Netmask);
    /// Static gateway.
    ORVA_FIELD(QString, gateway, Gateway);
    /// Static name servers.
    ORVA_FIELD(QStringList, dns, Dns);
    /// True if this network is the connected one.
    ORVA_FIELD(bool, connected, Connected);
    /// Frequency of the access point, in MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// Signal strength, in dBm.
    ORVA_FIELD(qint32, signalLevel, SignalLevel);
};

/// The configured profile. Invariant: where `wirelessNetworks` is not empty, `wireless` is its
/// first entry.
class ORVA_API OrvaNetworkProfile : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfile)
    /// The interfaces that the profile uses.
    ORVA_FIELD(OrvaNetworkProfileType, type, Type);
    /// The wired interface.
    ORVA_FIELD(OrvaNetworkInterface, wired, Wired);
    /// The wireless network in use.
    ORVA_FIELD(OrvaNetworkInterface, wireless, Wireless);
    /// Configured wireless networks, most preferred first.
    ORVA_FIELD(OrvaList<OrvaNetworkInterface>, wirelessNetworks, WirelessNetworks);
    /// One entry for each soft-AP interface.
    ORVA_FIELD(OrvaList<OrvaNetworkProfileSoftApSettings>, softApSettings, SoftApSettings);
};

/// A request to set a profile on trial.
class ORVA_API OrvaNetworkProfileTrial : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfileTrial)
    /// The profile, as it would be set for good.
    ORVA_FIELD(OrvaNetworkProfile, profile, Profile);
    /// The time in which it must be confirmed, in milliseconds: 1000 to 86400000.
    ORVA_FIELD(qint32, confirmWithinMs, ConfirmWithinMs);
};

/// The profile on trial that waits to be confirmed; empty where none does.
class ORVA_API OrvaNetworkPendingProfile : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkPendingProfile)
    /// The profile that comes back unless the one in use is confirmed; its keys as "****".
    ORVA_FIELD(OrvaNetworkProfile, before, Before);
    /// The moment at which it comes back, in milliseconds on the system's monotonic clock.
    ORVA_FIELD(qint64, untilMs, UntilMs);
};

/// The last try to join a wireless network that has ended.
class ORVA_API OrvaNetworkLastJoin : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkLastJoin)
    /// Name of the network; of several that were tried in vain, the most preferred, unless one
    /// refused its key.
    ORVA_FIELD(QString, ssid, Ssid);
    /// The outcome.
    ORVA_FIELD(OrvaNetworkJoinResult, result, Result);
    /// Why it failed.
    ORVA_FIELD(OrvaNetworkJoinReason, reason, Reason);
    /// The moment of the outcome, in milliseconds on the system's monotonic clock.
    ORVA_FIELD(qint64, whenMs, WhenMs);
};

/// State of WPS.
class ORVA_API OrvaNetworkWps : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWps)
    /// The state of the session.
    ORVA_FIELD(OrvaNetworkWpsStatus, status, Status);
    /// Method of the session that runs or ran last.
    ORVA_FIELD(OrvaNetworkWpsType, type, Type);
    /// The text of the last failed session's error.
    ORVA_FIELD(QString, lastError, LastError);
};

/// Published state of the wired interface.
class ORVA_API OrvaNetworkWiredInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWiredInterface)
    /// Interface name, such as "eth0".
    ORVA_FIELD(QString, name, Name);
    /// The state of its link.
    ORVA_FIELD(OrvaNetworkState, state, State);
    /// True if a cable is plugged in.
    ORVA_FIELD(bool, cableConnected, CableConnected);
    /// Hardware address, with colons.
    ORVA_FIELD(QString, mac, Mac);
    /// Its addresses, of both protocols.
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
    /// The step that it takes to connect.
    ORVA_FIELD(OrvaNetworkConnectingStatus, connectingStatus, ConnectingStatus);
};

/// Published state of the wireless interface, or of one configured wireless network.
class ORVA_API OrvaNetworkWirelessInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWirelessInterface)
    /// Interface name, such as "wlan0"; absent in an entry for a configured network.
    ORVA_FIELD(QString, name, Name);
    /// The state of its link.
    ORVA_FIELD(OrvaNetworkState, state, State);
    /// Hardware address of the interface, with colons.
    ORVA_FIELD(QString, mac, Mac);
    /// Name of the network.
    ORVA_FIELD(QString, ssid, Ssid);
    /// Hardware address of the access point.
    ORVA_FIELD(QString, bssid, Bssid);
    /// Security of the network.
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// Frequency of the access point, in MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// Wi-Fi channel number.
    ORVA_FIELD(qint32, channel, Channel);
    /// Signal strength, in dBm.
    ORVA_FIELD(qint32, signalLevel, SignalLevel);
    /// Its addresses, of both protocols.
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
    /// The step that it takes to connect.
    ORVA_FIELD(OrvaNetworkConnectingStatus, connectingStatus, ConnectingStatus);
    /// True if the stored key is suspected to be wrong.
    ORVA_FIELD(bool, credentialsSuspect, CredentialsSuspect);
    /// The WPS session that runs or ran last.
    ORVA_FIELD(OrvaNetworkWps, wps, Wps);
};

/// One running access point.
class ORVA_API OrvaNetworkSoftAp : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftAp)
    /// Interface name.
    ORVA_FIELD(QString, name, Name);
    /// Hardware address of the access point.
    ORVA_FIELD(QString, bssid, Bssid);
    /// The device's addresses in the access point's network.
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
};

/// Published state of the soft access points.
class ORVA_API OrvaNetworkSoftApInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftApInterface)
    /// "softap": stands for all of them.
    ORVA_FIELD(QString, name, Name);
    /// Connected while at least one access point runs.
    ORVA_FIELD(OrvaNetworkState, state, State);
    /// The access points that run.
    ORVA_FIELD(OrvaList<OrvaNetworkSoftAp>, aps, Aps);
};

/// The published network state.
class ORVA_API OrvaNetworkInfo : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkInfo)
    /// The overall state: connected when the wired or the wireless interface is.
    ORVA_FIELD(OrvaNetworkState, state, State);
    /// The wired interface.
    ORVA_FIELD(OrvaNetworkWiredInterface, wired, Wired);
    /// The wireless interface.
    ORVA_FIELD(OrvaNetworkWirelessInterface, wireless, Wireless);
    /// State of each configured wireless network.
    ORVA_FIELD(OrvaList<OrvaNetworkWirelessInterface>, wirelessNetworks, WirelessNetworks);
    /// The soft access points.
    ORVA_FIELD(OrvaNetworkSoftApInterface, softAp, SoftAp);
    /// Gateways of the connected interfaces.
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, gateways, Gateways);
    /// Name servers in use.
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, dns, Dns);
    /// True if airplane mode is on.
    ORVA_FIELD(bool, airplaneMode, AirplaneMode);
};

/// One wireless network that a scan found.
class ORVA_API OrvaNetworkScanResult : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkScanResult)
    /// Name of the network; empty where it hides it.
    ORVA_FIELD(QString, ssid, Ssid);
    /// Hardware address of the access point.
    ORVA_FIELD(QString, bssid, Bssid);
    /// Wi-Fi channel number.
    ORVA_FIELD(qint32, channel, Channel);
    /// Frequency of the access point, in MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// Signal strength, in dBm.
    ORVA_FIELD(qint32, signal, Signal);
    /// Signal-to-noise ratio, in dB.
    ORVA_FIELD(qint32, snr, Snr);
    /// Security of the network.
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// The information elements of the beacon, in hexadecimal.
    ORVA_FIELD(QString, ies, Ies);
    /// True where it offers WPA3 too, by the same pass phrase.
    ORVA_FIELD(bool, wpa3, Wpa3);
    /// The security for which the device cannot join it: "wep", "enterprise", "enhanced-open" or
    /// "unknown"; empty where it can.
    ORVA_FIELD(QString, unsupported, Unsupported);
};

/// The conditions under which the Wi-Fi watchdog restarts Wi-Fi.
class ORVA_API OrvaNetworkWifiRestartCriteria : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWifiRestartCriteria)
    /// Sampling interval in milliseconds; below 10000 the watchdog is off.
    ORVA_FIELD(qint32, checkIntervalMs, CheckIntervalMs);
    /// Number of consecutive stuck samples that triggers a restart; must be present.
    ORVA_FIELD(qint32, maxTxIncreaseNoRxIncreaseThreshold, MaxTxIncreaseNoRxIncreaseThreshold);
    /// The activate node that restarts Wi-Fi; must not be empty.
    ORVA_FIELD(CMPath, restartActivatePath, RestartActivatePath);
};

Q_DECLARE_METATYPE(OrvaNetworkScanResult)
Q_DECLARE_METATYPE(OrvaNetworkInterface)
