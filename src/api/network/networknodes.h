// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmnoderow.h"

// The nodes, a row each, in the columns of CMNodeRow: the function that gives the path, the path,
// the kind, the type, the permission, the title, and in words what the node is. A row is all that
// is said of a node: its function, its creation, what it takes, docs/nodes.md and the types that
// clients see come from it.

// clang-format off

/// The nodes of the network manager, in the order in which it creates them and clients see them:
/// those by which it tells how the network stands, and the requests that it takes.
#define ORVA_NETWORK_MANAGER_NODES(ROW)                                                            \
    ROW(OrvaNetworkStateConnected, "network/state/connected", Value, "bool", Default, "",          \
        "True if a wired or wireless link is up; a soft access point does not count.")             \
    ROW(OrvaNetworkInfoPath, "network/info", ReadOnly, "networkInfo", Default, "",                 \
        "The whole state: interfaces, addresses, known networks, airplane mode.")                  \
    ROW(OrvaNetworkStatePath, "network/state", Value, "networkState", Default, "",                 \
        "The overall state, in which soft access points take no part.")                            \
    ROW(OrvaNetworkConnectingMessage, "network/state/message", Value, "string", Default, "",       \
        "The outcome of connecting, or of a WPS session, in words for a person.")                  \
    ROW(OrvaNetworkScanResultsPath, "network/scan/results",                                        \
        Rows, "networkScanResult", Default, "",                                                    \
        "The networks that the last scan found.")                                                  \
    ROW(OrvaNetworkCurrentStatePath, "network/state/profile",                                      \
        Value, "networkProfile", Default, "",                                                      \
        "The network that is actually up, in the form of a profile; IPv4 alone. Without "          \
        "a value until the backend has first reported.")                                           \
    ROW(OrvaNetworkStateEthernetMAC, "network/state/ethernet-mac", Value, "string", Default, "",   \
        "Hardware address of the wired interface, with colons.")                                   \
    ROW(OrvaNetworkStateWirelessMAC, "network/state/wireless-mac", Value, "string", Default, "",   \
        "Hardware address of the wireless interface, with colons.")                                \
    ROW(OrvaNetworkStateCurrentMAC, "network/state/current-mac", Value, "string", Default, "",     \
        "Hardware address of the interface in use, upper case with colons: the wireless one "      \
        "where only that, or a soft access point, is up; else the wired one.")                     \
    ROW(OrvaNetworkStateCurrentCableStatus, "network/state/cable",                                 \
        Value, "bool", Default, "Current cable status",                                            \
        "True if a cable is plugged in.")                                                          \
    ROW(OrvaNetworkProfilePath, "network/profile",                                                 \
        ReadOnly, "networkProfile", Default, "Network profile",                                    \
        "The configured profile, each key as \"****\".")                                           \
    ROW(OrvaNetworkLocalWebserverUrlPath, "network/webserver/url",                                 \
        Value, "string", Default, "Local Webserver URL",                                           \
        "The URL of the device's web page in the network, else on the device itself. "             \
        "Without a value until the backend has first reported.")                                   \
    ROW(OrvaNetworkLocalWebserverLocalhostUrlPath, "network/webserver/localhost-url",              \
        Value, "string", Default, "Local Webserver URL (localhost)",                               \
        "The URL of the web page on the device itself.")                                           \
    ROW(OrvaNetworkConnectedSoftApStationsPath, "network/softap/stations",                         \
        ReadOnly, "stringList", Service, "Connected SoftAp stations",                              \
        "Hardware addresses of the stations at the soft access points. Without a value until a "   \
        "soft access point first came up.")                                                        \
    ROW(OrvaNetworkStartPath, "network/start", Action, "", Default, "",                            \
        "Applies the stored profile. Refused when networking is started already.")                 \
    ROW(OrvaNetworkRestartPath, "network/restart", Action, "", Default, "",                        \
        "Stops and starts anew, whether or not either succeeds.")                                  \
    ROW(OrvaNetworkShutdownPath, "network/shutdown", Action, "", Default, "",                      \
        "Announces the end of the connection, and stops two seconds later.")                       \
    ROW(OrvaNetworkStopPath, "network/stop", Action, "", Default, "",                              \
        "Disconnects, and ends every soft access point.")                                          \
    ROW(OrvaNetworkForceWifiReconnectPath, "network/wireless/reconnect", Action, "", Default, "",  \
        "Has the daemon give up the wireless connection and connect anew.")                        \
    ROW(OrvaNetworkSetNetworkProfilePath, "network/profile/set",                                   \
        Action, "networkProfile", Default, "",                                                     \
        "Merges the profile over the stored one, applies and stores the result; where that "       \
        "cannot be stored, the one before is in use again. A key \"****\" means the one that is "  \
        "stored for the network.")                                                                 \
    ROW(OrvaNetworkRemoveWirelessNetworkPath, "network/wireless/remove",                           \
        Action, "string", Default, "",                                                             \
        "Forgets the wireless network of this SSID.")                                              \
    ROW(OrvaNetworkScanPath, "network/scan", Action, "", Default, "",                              \
        "Answers `networkScanResults` when the scan is done, an error after 30 seconds without "   \
        "one.")                                                                                    \
    ROW(OrvaNetworkPerformWpsPbcPath, "network/wps/pbc", Action, "", Default, "",                  \
        "Starts a WPS session by push button; answers its `networkInterface`, with the key.")      \
    ROW(OrvaNetworkPerformWpsPinPath, "network/wps/pin", Action, "string", Default, "",            \
        "Starts a WPS session with this PIN of 8 digits; answers its `networkInterface`, with "    \
        "the key.")                                                                                \
    ROW(OrvaNetworkGenerateWpsPinPath, "network/wps/generate-pin", Action, "", Default, "",        \
        "Answers a `string`, a fresh PIN of 8 digits.")                                            \
    ROW(OrvaNetworkApplyWpsPath, "network/wps/apply", Action, "networkInterface", Default, "",     \
        "Makes what a WPS session answered part of the profile.")                                  \
    ROW(OrvaNetworkWirelessRssiPath, "network/wireless/rssi", Action, "", Default, "",             \
        "Answers a `double`, the signal strength of the wireless connection in dBm.")              \
    ROW(OrvaNetworkRequestSoftApPath, "network/softap/request",                                    \
        Action, "networkSoftApRequest", Default, "",                                               \
        "Asks for a soft access point; answers when it runs.")                                     \
    ROW(OrvaNetworkRevokeSoftApPath, "network/softap/revoke",                                      \
        Action, "networkSoftApRequest|string", Default, "",                                        \
        "Withdraws the request of this name.")                                                     \
    ROW(OrvaNetworkWakeOnLanSetEnabledPath, "network/wake-on-lan/set-enabled",                     \
        Action, "bool", Default, "",                                                               \
        "Has magic packets wake the device, or no longer.")                                        \
    ROW(OrvaNetworkRequestWifiRestartPath, "network/wireless/restart", Action, "", Default, "",    \
        "Activates the node that the watchdog's criteria name; answers as that one does.")         \
    ROW(OrvaNetworkAirplaneModePath, "network/airplane-mode",                                      \
        Value, "bool", Default, "Airplane Mode",                                                   \
        "True if airplane mode is on; writing it stores it and switches the radios; what cannot "  \
        "be stored changes nothing.")                                                              \
    ROW(OrvaNetworkSoftApRequestsPath, "network/softap/requests",                                  \
        ReadOnly, "softApRequests", Default, "",                                                   \
        "The live requests for a soft access point, with their settings.")                         \
    ROW(OrvaNetworkLastJoinPath, "network/wireless/last-join",                                     \
        ReadOnly, "networkLastJoin", Default, "",                                                  \
        "What became of the last try to join a wireless network, and why it failed; empty until "  \
        "one has ended. It stays while a soft access point runs.")                                 \
    ROW(OrvaNetworkStateOnlinePath, "network/state/online", ReadOnly, "networkOnline", Default, "", \
        "How far the device gets: the gateway by the watchdog's ping over Wi-Fi, the rest by the " \
        "probe that the settings name.")                                                           \
    ROW(OrvaNetworkPendingProfilePath, "network/profile/pending",                                  \
        ReadOnly, "networkPendingProfile", Default, "",                                            \
        "The profile that comes back, and when, unless the one in use, which is on trial, is "     \
        "confirmed; empty where none is on trial.")                                                \
    ROW(OrvaNetworkTryNetworkProfilePath, "network/profile/try",                                   \
        Action, "networkProfileTrial", Default, "",                                                \
        "Sets the profile like `network/profile/set`, on trial: the one before comes back when "   \
        "the time is over, and at the host's next start, unless `network/profile/confirm` comes "  \
        "first. Whatever changes the profile meanwhile is on trial with it; a second trial has a " \
        "time of its own, and the profile that was confirmed last comes back after it.")           \
    ROW(OrvaNetworkConfirmProfilePath, "network/profile/confirm", Action, "", Default, "",         \
        "Ends the trial: the profile in use stays. Refused where none is on trial.")               \
    ROW(OrvaNetworkRollbackProfilePath, "network/profile/rollback", Action, "", Default, "",       \
        "Ends the trial: the profile before is in use again, also where that cannot be stored. "   \
        "Refused where none is on trial.")                                                         \
    ROW(OrvaNetworkRestoreBackupPath, "network/profile/restore-backup", Action, "", Default, "",   \
        "Makes the wireless networks that too many refused keys set aside part of the profile "    \
        "again, behind those that it has, as many as find room. Refused where none does.")         \
    ROW(OrvaNetworkCancelWpsPath, "network/wps/cancel", Action, "", Default, "",                   \
        "Ends the WPS session that runs; its own request fails. Refused where none runs.")         \
    ROW(OrvaNetworkUnsupportedNetworksPath, "network/scan/unsupported",                            \
        Rows, "networkScanResult", Default, "",                                                    \
        "The networks that the last scan found and that the device cannot join.")

/// The settings of the network manager; the host's settings worker keeps them. Those with keys are
/// secret nodes.
#define ORVA_NETWORK_SETTING_NODES(ROW)                                                            \
    ROW(OrvaNetworkCurrentProfileSettingsPath, "settings/network/current-profile",                 \
        Value, "networkProfile", Default, "",                                                      \
        "The configured profile, with its keys: for root and the host's user alone.")              \
    ROW(OrvaNetworkBackupProfileSettingsPath, "settings/network/backup-profile",                   \
        Value, "networkProfile", Default, "",                                                      \
        "The profile as it was before too many refused keys emptied it, with its keys: for root "  \
        "and the host's user alone.")                                                              \
    ROW(OrvaNetworkRollbackProfileSettingsPath, "settings/network/rollback-profile",               \
        Value, "networkProfile", Default, "",                                                      \
        "The profile that comes back unless the current one is confirmed, with its keys: for "     \
        "root and the host's user alone. Empty where none is on trial.")                           \
    ROW(OrvaNetworkMaxAuthFailuresSettingsPath, "settings/network/max-auth-failures",              \
        Value, "i32", Default, "",                                                                 \
        "The number of refusals of a key that empties the profile; 0 or less: none does. "         \
        "Read when the host starts.")                                                              \
    ROW(OrvaNetworkMaxNumberWifiNetworks, "settings/network/max-wifi-networks",                    \
        Value, "i32", Default, "",                                                                 \
        "The number of wireless networks that a profile keeps; 0 or less: all.")                   \
    ROW(OrvaNetworkAirplaneModeSettingPath, "settings/network/airplane-mode",                      \
        Value, "bool", Default, "",                                                                \
        "True if the device starts in airplane mode; follows `network/airplane-mode`.")            \
    ROW(OrvaNetworkAirplaneModeTypeSettingPath, "settings/network/airplane-mode-type",             \
        Value, "airplaneModeType", Default, "",                                                    \
        "Which radios airplane mode blocks. Read when the host starts.")                           \
    ROW(OrvaNetworkSoftApAutoEnabledSettingsPath, "settings/network/softap-auto-enabled",          \
        Value, "bool", Default, "",                                                                \
        "True if a soft access point opens by itself where no link comes up.")                     \
    ROW(OrvaNetworkSoftApDefaultSsidSettingsPath, "settings/network/softap-default-ssid",          \
        Value, "string", Default, "",                                                              \
        "A configured soft access point of this SSID gets the device's hardware address added.")   \
    ROW(OrvaNetworkSoftApConfigSettingsPath, "settings/network/softap-config",                     \
        Value, "networkProfile", Default, "",                                                      \
        "Its `softApSettings` configure the soft access points; for root and the host's user "     \
        "alone. Read when the host starts.")                                                       \
    ROW(OrvaNetworkOnlineProbeSettingsPath, "settings/network/online-probe",                       \
        Value, "string", Default, "",                                                              \
        "The http URL that is asked whether the device is online; empty: none is.")                \
    ROW(OrvaNetworkOnlineProbeBodySettingsPath, "settings/network/online-probe-body",              \
        Value, "string", Default, "",                                                              \
        "The body of the answer with status 200 that says so; status 204 says so too.")            \
    ROW(OrvaNetworkWifiRestartCriteriaPath, "settings/network/wifi-restart-criteria",              \
        Value, "wifiRestartCriteria", Default, "",                                                 \
        "The conditions under which the watchdog restarts Wi-Fi; empty: never.")

/// The nodes of other workers that the network manager reads.
#define ORVA_NETWORK_FOREIGN_NODES(ROW)                                                            \
    ROW(OrvaNetworkWiredInterfacePath, "interfaces/wired", ReadOnly, "string", Default, "",        \
        "Name of the wired interface.")                                                            \
    ROW(OrvaNetworkWirelessInterfacePath, "interfaces/wireless", ReadOnly, "string", Default, "",  \
        "Name of the wireless interface.")                                                         \
    ROW(OrvaWebserverPortPath, "webserver/port", ReadOnly, "i32", Default, "",                     \
        "Port of the device's web page; 0 or less: none stands in its URL.")

/// All of them.
#define ORVA_NETWORK_NODES(ROW)                                                                    \
    ORVA_NETWORK_MANAGER_NODES(ROW)                                                                \
    ORVA_NETWORK_SETTING_NODES(ROW)                                                                \
    ORVA_NETWORK_FOREIGN_NODES(ROW)

// clang-format on

/// The row of the node at `path`, for its creation. A path without a row is our own mistake
/// (fatal).
[[nodiscard]] ORVA_API const CMNodeRow& orvaNetworkNode(const CMPath& path);
