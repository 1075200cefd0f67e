#pragma once

#include "../core/cmpath.h"

/// The name under which the network manager registers with the power manager.
[[nodiscard]] ORVA_API QString OrvaNetworkName();

/// Delay before the fallback soft access point starts, in milliseconds.
[[nodiscard]] ORVA_API int OrvaNetworkSoftApTimeout();

// Nodes that publish state.
ORVA_API CMPath OrvaNetworkInfoPath();          ///< `networkInfo`, read-only.
ORVA_API CMPath OrvaNetworkStatePath();         ///< `networkState`, overall.
ORVA_API CMPath OrvaNetworkStateConnected();    ///< `bool`: some link other than a soft AP is up.
ORVA_API CMPath OrvaNetworkConnectingMessage(); ///< `string` for a person.
ORVA_API CMPath OrvaNetworkCurrentStatePath();  ///< `networkProfile`: what is actually up.
ORVA_API CMPath OrvaNetworkStateEthernetMAC();  ///< `string`.
ORVA_API CMPath OrvaNetworkStateWirelessMAC();  ///< `string`.
ORVA_API CMPath OrvaNetworkStateCurrentMAC();   ///< `string`, upper case.
ORVA_API CMPath OrvaNetworkStateCurrentCableStatus(); ///< `bool`: a cable is plugged in.
ORVA_API CMPath OrvaNetworkProfilePath();             ///< `networkProfile`, keys masked, read-only.
ORVA_API CMPath OrvaNetworkScanResultsPath();         ///< Rows of `networkScanResult`.
ORVA_API CMPath OrvaNetworkLocalWebserverUrlPath();   ///< `string`.
ORVA_API CMPath OrvaNetworkLocalWebserverLocalhostUrlPath(); ///< `string`.
ORVA_API CMPath OrvaNetworkConnectedSoftApStationsPath();    ///< `stringList` of MACs, read-only.
ORVA_API CMPath OrvaNetworkSoftApRequestsPath();             ///< `softApRequests`, read-only.
ORVA_API CMPath OrvaNetworkAirplaneModePath();               ///< `bool`, may be written.

// Activate nodes.
ORVA_API CMPath OrvaNetworkStartPath();
ORVA_API CMPath OrvaNetworkStopPath();
ORVA_API CMPath OrvaNetworkRestartPath();
ORVA_API CMPath OrvaNetworkShutdownPath();
ORVA_API CMPath OrvaNetworkSetNetworkProfilePath();     ///< Takes a `networkProfile`.
ORVA_API CMPath OrvaNetworkRemoveWirelessNetworkPath(); ///< Takes a `string`, the SSID.
ORVA_API CMPath OrvaNetworkScanPath();                  ///< Answers `networkScanResults`.
ORVA_API CMPath OrvaNetworkPerformWpsPbcPath();         ///< Answers a `networkInterface`.
ORVA_API CMPath OrvaNetworkPerformWpsPinPath(); ///< Takes a `string`, answers a `networkInterface`.
ORVA_API CMPath OrvaNetworkGenerateWpsPinPath(); ///< Answers a `string` of 8 digits.
ORVA_API CMPath OrvaNetworkApplyWpsPath();       ///< Takes a `networkInterface`.
ORVA_API CMPath OrvaNetworkWirelessRssiPath();   ///< Answers a `double`, in dBm.
ORVA_API CMPath OrvaNetworkForceWifiReconnectPath();
ORVA_API CMPath OrvaNetworkRequestSoftApPath(); ///< Takes a `networkSoftApRequest`.
ORVA_API CMPath
OrvaNetworkRevokeSoftApPath(); ///< Takes a `networkSoftApRequest` or a `string`, the name.
ORVA_API CMPath OrvaNetworkRequestWifiRestartPath();
ORVA_API CMPath OrvaNetworkWakeOnLanSetEnabledPath(); ///< Takes a `bool`.

// Settings.
ORVA_API CMPath OrvaNetworkCurrentProfileSettingsPath();    ///< `networkProfile`, with keys.
ORVA_API CMPath OrvaNetworkBackupProfileSettingsPath();     ///< `networkProfile`, with keys.
ORVA_API CMPath OrvaNetworkMaxAuthFailuresSettingsPath();   ///< `i32`; 0 or less: no limit.
ORVA_API CMPath OrvaNetworkMaxNumberWifiNetworks();         ///< `i32`; 0 or less: no limit.
ORVA_API CMPath OrvaNetworkAirplaneModeSettingPath();       ///< `bool`.
ORVA_API CMPath OrvaNetworkAirplaneModeTypeSettingPath();   ///< `airplaneModeType`.
ORVA_API CMPath OrvaNetworkSoftApAutoEnabledSettingsPath(); ///< `bool`.
ORVA_API CMPath OrvaNetworkSoftApDefaultSsidSettingsPath(); ///< `string`.
ORVA_API CMPath
OrvaNetworkSoftApConfigSettingsPath(); ///< `networkProfile`, its `softApSettings` alone.
ORVA_API CMPath OrvaNetworkWifiRestartCriteriaPath(); ///< `wifiRestartCriteria`.

// Nodes of other workers.
ORVA_API CMPath OrvaNetworkWiredInterfacePath();    ///< `string`, the interface name.
ORVA_API CMPath OrvaNetworkWirelessInterfacePath(); ///< `string`, the interface name.
ORVA_API CMPath OrvaWebserverPortPath();            ///< `i32`; 0 or less: the default port.
