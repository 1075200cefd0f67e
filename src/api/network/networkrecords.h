#pragma once

#include "../core/cmpath.h"
#include "../core/orvavalue.h"
#include "networkenums.h"

/// One address of an interface, a gateway or a name server.
class ORVA_API OrvaNetworkAddress : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkAddress)
    /// The address as text, without prefix.
    ORVA_FIELD(QString, ip, Ip);
    /// Prefix length: 0 to 32 for IPv4, 0 to 128 for IPv6.
    ORVA_FIELD(qint32, prefix, Prefix);
    ORVA_FIELD(OrvaNetworkAddressProtocol, protocol, Protocol);
    ORVA_FIELD(OrvaNetworkAddressScope, scope, Scope);
    /// Whether the address was obtained by DHCP.
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
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// Address by DHCP when true, else from the static fields below.
    ORVA_FIELD(bool, dhcp, Dhcp);
    ORVA_FIELD(QString, ip, Ip);
    ORVA_FIELD(QString, netmask, Netmask);
    ORVA_FIELD(QString, gateway, Gateway);
    ORVA_FIELD(QStringList, dns, Dns);
    /// Whether this network is the connected one.
    ORVA_FIELD(bool, connected, Connected);
    /// In MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// In dBm.
    ORVA_FIELD(qint32, signalLevel, SignalLevel);
};

/// Configuration of one soft access point. A field may be absent, which differs from present and
/// empty.
class ORVA_API OrvaNetworkProfileSoftApSettings : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfileSoftApSettings)
    ORVA_FIELD(QString, ssid, Ssid);
    ORVA_FIELD(QString, bssid, Bssid);
    /// Wi-Fi channel number.
    ORVA_FIELD(qint32, channel, Channel);
    /// Two letters, ISO 3166-1.
    ORVA_FIELD(QString, countryCode, CountryCode);
    /// Name of the interface that carries the access point, such as "uap0".
    ORVA_FIELD(QString, apInterface, ApInterface);
    ORVA_FIELD(QString, apAddress, ApAddress);
    ORVA_FIELD(QString, apNetmask, ApNetmask);
    ORVA_FIELD(QString, dhcpRangeFrom, DhcpRangeFrom);
    ORVA_FIELD(QString, dhcpRangeTo, DhcpRangeTo);
    ORVA_FIELD(QString, domainName, DomainName);
    /// Sent in the access point's beacons.
    ORVA_FIELD(QString, vendorSpecificData, VendorSpecificData);
};

/// A submodule's request for a soft access point.
class ORVA_API OrvaNetworkProfileSoftApRequest : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfileSoftApRequest)
    /// The requesting submodule.
    ORVA_FIELD(QString, name, Name);
    ORVA_FIELD(OrvaNetworkProfileSoftApSettings, settings, Settings);
    /// In milliseconds, at most 60000; 0 or less means no expiry.
    ORVA_FIELD(qint32, timeout, Timeout);
    /// Whether other requests must leave the running settings alone; needs a timeout.
    ORVA_FIELD(bool, holdSoftAp, HoldSoftAp);
};

/// One live soft-AP request as it is published.
class ORVA_API OrvaNetworkSoftApRequestStatus : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftApRequestStatus)
    /// The requesting submodule.
    ORVA_FIELD(QString, name, Name);
    /// The soft-AP interface.
    ORVA_FIELD(QString, interface, Interface);
    ORVA_FIELD(OrvaNetworkProfileSoftApSettings, settings, Settings);
    ORVA_FIELD(bool, hold, Hold);
    /// Milliseconds from the time of publishing to the expiry; 0 when it does not expire.
    ORVA_FIELD(qint32, expiresInMs, ExpiresInMs);
    /// Whether the access point of the interface runs.
    ORVA_FIELD(bool, running, Running);
};

/// The configured profile. Invariant: where `wirelessNetworks` is not empty, `wireless` is its
/// first entry.
class ORVA_API OrvaNetworkProfile : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfile)
    ORVA_FIELD(OrvaNetworkProfileType, type, Type);
    ORVA_FIELD(OrvaNetworkInterface, wired, Wired);
    /// The wireless network in use.
    ORVA_FIELD(OrvaNetworkInterface, wireless, Wireless);
    /// Configured wireless networks, most preferred first.
    ORVA_FIELD(OrvaList<OrvaNetworkInterface>, wirelessNetworks, WirelessNetworks);
    /// One entry for each soft-AP interface.
    ORVA_FIELD(OrvaList<OrvaNetworkProfileSoftApSettings>, softApSettings, SoftApSettings);
};

/// State of WPS.
class ORVA_API OrvaNetworkWps : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWps)
    ORVA_FIELD(OrvaNetworkWpsStatus, status, Status);
    ORVA_FIELD(OrvaNetworkWpsType, type, Type);
    /// The text of the last failed session's error.
    ORVA_FIELD(QString, lastError, LastError);
};

/// Published state of the wired interface.
class ORVA_API OrvaNetworkWiredInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWiredInterface)
    ORVA_FIELD(QString, name, Name);
    ORVA_FIELD(OrvaNetworkState, state, State);
    ORVA_FIELD(bool, cableConnected, CableConnected);
    /// Upper case, with colons.
    ORVA_FIELD(QString, mac, Mac);
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
    ORVA_FIELD(OrvaNetworkConnectingStatus, connectingStatus, ConnectingStatus);
};

/// Published state of the wireless interface, or of one configured wireless network.
class ORVA_API OrvaNetworkWirelessInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkWirelessInterface)
    ORVA_FIELD(QString, name, Name);
    ORVA_FIELD(OrvaNetworkState, state, State);
    ORVA_FIELD(QString, mac, Mac);
    ORVA_FIELD(QString, ssid, Ssid);
    ORVA_FIELD(QString, bssid, Bssid);
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// In MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// Wi-Fi channel number.
    ORVA_FIELD(qint32, channel, Channel);
    /// In dBm.
    ORVA_FIELD(qint32, signalLevel, SignalLevel);
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
    ORVA_FIELD(OrvaNetworkConnectingStatus, connectingStatus, ConnectingStatus);
    /// Whether the stored key is suspected to be wrong.
    ORVA_FIELD(bool, credentialsSuspect, CredentialsSuspect);
    ORVA_FIELD(OrvaNetworkWps, wps, Wps);
};

/// One running access point.
class ORVA_API OrvaNetworkSoftAp : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftAp)
    /// Interface name.
    ORVA_FIELD(QString, name, Name);
    ORVA_FIELD(QString, bssid, Bssid);
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, addresses, Addresses);
};

/// Published state of the soft access points.
class ORVA_API OrvaNetworkSoftApInterface : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftApInterface)
    ORVA_FIELD(QString, name, Name);
    ORVA_FIELD(OrvaNetworkState, state, State);
    ORVA_FIELD(OrvaList<OrvaNetworkSoftAp>, aps, Aps);
};

/// The published network state.
class ORVA_API OrvaNetworkInfo : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkInfo)
    /// Overall state.
    ORVA_FIELD(OrvaNetworkState, state, State);
    ORVA_FIELD(OrvaNetworkWiredInterface, wired, Wired);
    ORVA_FIELD(OrvaNetworkWirelessInterface, wireless, Wireless);
    /// State of each configured wireless network.
    ORVA_FIELD(OrvaList<OrvaNetworkWirelessInterface>, wirelessNetworks, WirelessNetworks);
    ORVA_FIELD(OrvaNetworkSoftApInterface, softAp, SoftAp);
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, gateways, Gateways);
    ORVA_FIELD(OrvaList<OrvaNetworkAddress>, dns, Dns);
    ORVA_FIELD(bool, airplaneMode, AirplaneMode);
};

/// One wireless network that a scan found.
class ORVA_API OrvaNetworkScanResult : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkScanResult)
    ORVA_FIELD(QString, ssid, Ssid);
    ORVA_FIELD(QString, bssid, Bssid);
    /// Wi-Fi channel number.
    ORVA_FIELD(qint32, channel, Channel);
    /// In MHz.
    ORVA_FIELD(qint32, frequency, Frequency);
    /// In dBm.
    ORVA_FIELD(qint32, signal, Signal);
    /// Signal-to-noise ratio, in dB.
    ORVA_FIELD(qint32, snr, Snr);
    ORVA_FIELD(OrvaNetworkProfileWirelessEncryption, encryption, Encryption);
    /// The information elements of the beacon, in hexadecimal.
    ORVA_FIELD(QString, ies, Ies);
};

/// When the Wi-Fi watchdog restarts Wi-Fi.
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
