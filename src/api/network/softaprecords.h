// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvavalue.h"

/// Configuration of one soft access point. A field may be absent, which differs from present and
/// empty.
class ORVA_API OrvaNetworkProfileSoftApSettings : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfileSoftApSettings)
    /// Network name that the access point announces, 1 to 32 bytes.
    ORVA_FIELD(QString, ssid, Ssid);
    /// Pass phrase of WPA2, 8 to 63 printable ASCII characters; absent: the access point is open.
    /// Published as "****".
    ORVA_FIELD(QString, passphrase, Passphrase);
    /// Hardware address of the access point.
    ORVA_FIELD(QString, bssid, Bssid);
    /// Wi-Fi channel number of the 2.4, 5 or 6 GHz band.
    ORVA_FIELD(qint32, channel, Channel);
    /// The country whose radio rules hold: two letters, ISO 3166-1.
    ORVA_FIELD(QString, countryCode, CountryCode);
    /// Name of the interface that carries the access point, such as "uap0".
    ORVA_FIELD(QString, apInterface, ApInterface);
    /// The device's own IPv4 address in the access point's network.
    ORVA_FIELD(QString, apAddress, ApAddress);
    /// Netmask of that network, dotted.
    ORVA_FIELD(QString, apNetmask, ApNetmask);
    /// First of the addresses that stations get by DHCP.
    ORVA_FIELD(QString, dhcpRangeFrom, DhcpRangeFrom);
    /// Last of the addresses that stations get by DHCP.
    ORVA_FIELD(QString, dhcpRangeTo, DhcpRangeTo);
    /// Name under which stations reach the device.
    ORVA_FIELD(QString, domainName, DomainName);
    /// Vendor-specific data for the access point's beacons, as the connection daemon takes it.
    ORVA_FIELD(QString, vendorSpecificData, VendorSpecificData);
};

/// A submodule's request for a soft access point.
class ORVA_API OrvaNetworkProfileSoftApRequest : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkProfileSoftApRequest)
    /// The requesting submodule, at most 64 characters.
    ORVA_FIELD(QString, name, Name);
    /// The settings that the requester asks for; only fields that are present count.
    ORVA_FIELD(OrvaNetworkProfileSoftApSettings, settings, Settings);
    /// In milliseconds, at most 60000; 0 or less means no expiry.
    ORVA_FIELD(qint32, timeout, Timeout);
    /// True if other requests must leave the running settings alone; needs a timeout.
    ORVA_FIELD(bool, holdSoftAp, HoldSoftAp);
    /// True if the request ends, like by a revocation, when the client that made it leaves the bus.
    ORVA_FIELD(bool, bound, Bound);
};

/// One live soft-AP request as it is published.
class ORVA_API OrvaNetworkSoftApRequestStatus : public OrvaHash
{
    ORVA_RECORD(OrvaNetworkSoftApRequestStatus)
    /// The requesting submodule.
    ORVA_FIELD(QString, name, Name);
    /// The soft-AP interface.
    ORVA_FIELD(QString, interface, Interface);
    /// The settings that the requester asked for.
    ORVA_FIELD(OrvaNetworkProfileSoftApSettings, settings, Settings);
    /// The settings that the access point of the interface has, by the configuration and all the
    /// requests.
    ORVA_FIELD(OrvaNetworkProfileSoftApSettings, applied, Applied);
    /// True if the request holds the running settings.
    ORVA_FIELD(bool, hold, Hold);
    /// True if the request ends when the client that made it leaves the bus.
    ORVA_FIELD(bool, bound, Bound);
    /// The moment of its expiry, in milliseconds on the system's monotonic clock; 0 when it does
    /// not expire.
    ORVA_FIELD(qint64, expiresAtMs, ExpiresAtMs);
    /// True if the link of the interface is up.
    ORVA_FIELD(bool, running, Running);
};
