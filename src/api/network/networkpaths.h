#pragma once

#include "core/cmpath.h"

/// The name under which the network manager registers with the power manager.
[[nodiscard]] ORVA_API QString OrvaNetworkName();

/// Delay before the fallback soft access point starts, in milliseconds.
[[nodiscard]] ORVA_API int OrvaNetworkSoftApTimeout();

// A path's comment begins with the type key of the value that its node holds, or with "Takes" and
// what an activation takes. docs/nodes.md is made of these comments and of what the host says.

// Nodes that publish state.

/// `networkInfo`: the whole state: interfaces, addresses, known networks, airplane mode.
ORVA_API CMPath OrvaNetworkInfoPath();
/// `networkState`: the overall state, in which soft access points take no part.
ORVA_API CMPath OrvaNetworkStatePath();
/// `bool`: whether a wired or wireless link is up; a soft access point does not count.
ORVA_API CMPath OrvaNetworkStateConnected();
/// `string`: what connecting, or a WPS session, has come to, in words for a person.
ORVA_API CMPath OrvaNetworkConnectingMessage();
/// `networkProfile`: what is actually up, in the form of a profile; IPv4 alone. Without a value
/// until the backend has first reported.
ORVA_API CMPath OrvaNetworkCurrentStatePath();
/// `string`: hardware address of the wired interface, with colons.
ORVA_API CMPath OrvaNetworkStateEthernetMAC();
/// `string`: hardware address of the wireless interface, with colons.
ORVA_API CMPath OrvaNetworkStateWirelessMAC();
/// `string`: hardware address of the interface in use, upper case with colons: the wireless one
/// where only that, or a soft access point, is up; else the wired one.
ORVA_API CMPath OrvaNetworkStateCurrentMAC();
/// `bool`: whether a cable is plugged in.
ORVA_API CMPath OrvaNetworkStateCurrentCableStatus();
/// `networkProfile`: the configured profile, each key as "****".
ORVA_API CMPath OrvaNetworkProfilePath();
/// `networkScanResult`: what the last scan found.
ORVA_API CMPath OrvaNetworkScanResultsPath();
/// `string`: where the device's web page is reached from the network, else on the device itself.
/// Without a value until the backend has first reported.
ORVA_API CMPath OrvaNetworkLocalWebserverUrlPath();
/// `string`: where the web page is reached on the device itself.
ORVA_API CMPath OrvaNetworkLocalWebserverLocalhostUrlPath();
/// `stringList`: hardware addresses of the stations at the soft access points. Without a value
/// until a soft access point first came up.
ORVA_API CMPath OrvaNetworkConnectedSoftApStationsPath();
/// `softApRequests`: who asks for a soft access point at present, and with which settings.
ORVA_API CMPath OrvaNetworkSoftApRequestsPath();
/// `bool`: whether airplane mode is on; writing it stores it and switches the radios; what cannot
/// be stored changes nothing.
ORVA_API CMPath OrvaNetworkAirplaneModePath();

// Activate nodes.

/// Applies the stored profile. Refused when networking is started already.
ORVA_API CMPath OrvaNetworkStartPath();
/// Disconnects, and ends every soft access point.
ORVA_API CMPath OrvaNetworkStopPath();
/// Stops and starts anew, whether or not either succeeds.
ORVA_API CMPath OrvaNetworkRestartPath();
/// Announces the end of the connection, and stops two seconds later.
ORVA_API CMPath OrvaNetworkShutdownPath();
/// Takes a `networkProfile`: merges it over the stored one, applies and stores the result; where
/// that cannot be stored, the one before is in use again. A key "****" means the one that is stored
/// for the network.
ORVA_API CMPath OrvaNetworkSetNetworkProfilePath();
/// Takes a `string`, the SSID: forgets the wireless network.
ORVA_API CMPath OrvaNetworkRemoveWirelessNetworkPath();
/// Answers `networkScanResults` when the scan is done, an error after 30 seconds without one.
ORVA_API CMPath OrvaNetworkScanPath();
/// Starts a WPS session by push button; answers its `networkInterface`, with the key.
ORVA_API CMPath OrvaNetworkPerformWpsPbcPath();
/// Takes a `string`, a PIN of 8 digits: starts a WPS session with it; answers its
/// `networkInterface`, with the key.
ORVA_API CMPath OrvaNetworkPerformWpsPinPath();
/// Answers a `string`, a fresh PIN of 8 digits.
ORVA_API CMPath OrvaNetworkGenerateWpsPinPath();
/// Takes a `networkInterface`, what a WPS session answered: makes it part of the profile.
ORVA_API CMPath OrvaNetworkApplyWpsPath();
/// Answers a `double`, the signal strength of the wireless connection in dBm.
ORVA_API CMPath OrvaNetworkWirelessRssiPath();
/// Has the daemon give up the wireless connection and connect anew.
ORVA_API CMPath OrvaNetworkForceWifiReconnectPath();
/// Takes a `networkSoftApRequest`: answers when the access point runs.
ORVA_API CMPath OrvaNetworkRequestSoftApPath();
/// Takes a `networkSoftApRequest` or a `string`, the name: withdraws the request of that name.
ORVA_API CMPath OrvaNetworkRevokeSoftApPath();
/// Activates the node that the watchdog's criteria name; answers as that one does.
ORVA_API CMPath OrvaNetworkRequestWifiRestartPath();
/// Takes a `bool`: has magic packets wake the device, or no longer.
ORVA_API CMPath OrvaNetworkWakeOnLanSetEnabledPath();

// Settings.

/// `networkProfile`: the configured profile, with its keys: for root and the host's user alone.
ORVA_API CMPath OrvaNetworkCurrentProfileSettingsPath();
/// `networkProfile`: the profile as it was before too many refused keys emptied it, with its keys:
/// for root and the host's user alone.
ORVA_API CMPath OrvaNetworkBackupProfileSettingsPath();
/// `i32`: how many refusals of a key empty the profile; 0 or less: none does. Read when the host
/// starts.
ORVA_API CMPath OrvaNetworkMaxAuthFailuresSettingsPath();
/// `i32`: how many wireless networks a profile keeps; 0 or less: all.
ORVA_API CMPath OrvaNetworkMaxNumberWifiNetworks();
/// `bool`: whether the device starts in airplane mode; follows `network/airplane-mode`.
ORVA_API CMPath OrvaNetworkAirplaneModeSettingPath();
/// `airplaneModeType`: which radios airplane mode blocks. Read when the host starts.
ORVA_API CMPath OrvaNetworkAirplaneModeTypeSettingPath();
/// `bool`: whether a soft access point opens by itself where no link comes up.
ORVA_API CMPath OrvaNetworkSoftApAutoEnabledSettingsPath();
/// `string`: a configured soft access point of this SSID gets the device's hardware address added.
ORVA_API CMPath OrvaNetworkSoftApDefaultSsidSettingsPath();
/// `networkProfile`: its `softApSettings` configure the soft access points; for root and the host's
/// user alone. Read when the host starts.
ORVA_API CMPath OrvaNetworkSoftApConfigSettingsPath();
/// `wifiRestartCriteria`: when the watchdog restarts Wi-Fi; empty: never.
ORVA_API CMPath OrvaNetworkWifiRestartCriteriaPath();

// Nodes of other workers.

/// `string`: name of the wired interface.
ORVA_API CMPath OrvaNetworkWiredInterfacePath();
/// `string`: name of the wireless interface.
ORVA_API CMPath OrvaNetworkWirelessInterfacePath();
/// `i32`: port of the device's web page; 0 or less: none stands in its URL.
ORVA_API CMPath OrvaWebserverPortPath();
