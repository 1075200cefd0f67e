#include "network/networkpaths.h"

// clang-format off
CMPath OrvaNetworkInfoPath() { return CMPath(QStringLiteral("network/info")); }
CMPath OrvaNetworkStatePath() { return CMPath(QStringLiteral("network/state")); }
CMPath OrvaNetworkStateConnected() { return CMPath(QStringLiteral("network/state/connected")); }
CMPath OrvaNetworkConnectingMessage() { return CMPath(QStringLiteral("network/state/message")); }
CMPath OrvaNetworkCurrentStatePath() { return CMPath(QStringLiteral("network/state/profile")); }
CMPath OrvaNetworkStateEthernetMAC() { return CMPath(QStringLiteral("network/state/ethernet-mac")); }
CMPath OrvaNetworkStateWirelessMAC() { return CMPath(QStringLiteral("network/state/wireless-mac")); }
CMPath OrvaNetworkStateCurrentMAC() { return CMPath(QStringLiteral("network/state/current-mac")); }
CMPath OrvaNetworkStateCurrentCableStatus() { return CMPath(QStringLiteral("network/state/cable")); }
CMPath OrvaNetworkProfilePath() { return CMPath(QStringLiteral("network/profile")); }
CMPath OrvaNetworkScanResultsPath() { return CMPath(QStringLiteral("network/scan/results")); }
CMPath OrvaNetworkLocalWebserverUrlPath() { return CMPath(QStringLiteral("network/webserver/url")); }
CMPath OrvaNetworkLocalWebserverLocalhostUrlPath() { return CMPath(QStringLiteral("network/webserver/localhost-url")); }
CMPath OrvaNetworkConnectedSoftApStationsPath() { return CMPath(QStringLiteral("network/softap/stations")); }
CMPath OrvaNetworkSoftApRequestsPath() { return CMPath(QStringLiteral("network/softap/requests")); }
CMPath OrvaNetworkAirplaneModePath() { return CMPath(QStringLiteral("network/airplane-mode")); }
CMPath OrvaNetworkStartPath() { return CMPath(QStringLiteral("network/start")); }
CMPath OrvaNetworkStopPath() { return CMPath(QStringLiteral("network/stop")); }
CMPath OrvaNetworkRestartPath() { return CMPath(QStringLiteral("network/restart")); }
CMPath OrvaNetworkShutdownPath() { return CMPath(QStringLiteral("network/shutdown")); }
CMPath OrvaNetworkSetNetworkProfilePath() { return CMPath(QStringLiteral("network/profile/set")); }
CMPath OrvaNetworkRemoveWirelessNetworkPath() { return CMPath(QStringLiteral("network/wireless/remove")); }
CMPath OrvaNetworkScanPath() { return CMPath(QStringLiteral("network/scan")); }
CMPath OrvaNetworkPerformWpsPbcPath() { return CMPath(QStringLiteral("network/wps/pbc")); }
CMPath OrvaNetworkPerformWpsPinPath() { return CMPath(QStringLiteral("network/wps/pin")); }
CMPath OrvaNetworkGenerateWpsPinPath() { return CMPath(QStringLiteral("network/wps/generate-pin")); }
CMPath OrvaNetworkApplyWpsPath() { return CMPath(QStringLiteral("network/wps/apply")); }
CMPath OrvaNetworkWirelessRssiPath() { return CMPath(QStringLiteral("network/wireless/rssi")); }
CMPath OrvaNetworkForceWifiReconnectPath() { return CMPath(QStringLiteral("network/wireless/reconnect")); }
CMPath OrvaNetworkRequestSoftApPath() { return CMPath(QStringLiteral("network/softap/request")); }
CMPath OrvaNetworkRevokeSoftApPath() { return CMPath(QStringLiteral("network/softap/revoke")); }
CMPath OrvaNetworkRequestWifiRestartPath() { return CMPath(QStringLiteral("network/wireless/restart")); }
CMPath OrvaNetworkWakeOnLanSetEnabledPath() { return CMPath(QStringLiteral("network/wake-on-lan/set-enabled")); }
CMPath OrvaNetworkCurrentProfileSettingsPath() { return CMPath(QStringLiteral("settings/network/current-profile")); }
CMPath OrvaNetworkBackupProfileSettingsPath() { return CMPath(QStringLiteral("settings/network/backup-profile")); }
CMPath OrvaNetworkMaxAuthFailuresSettingsPath() { return CMPath(QStringLiteral("settings/network/max-auth-failures")); }
CMPath OrvaNetworkMaxNumberWifiNetworks() { return CMPath(QStringLiteral("settings/network/max-wifi-networks")); }
CMPath OrvaNetworkAirplaneModeSettingPath() { return CMPath(QStringLiteral("settings/network/airplane-mode")); }
CMPath OrvaNetworkAirplaneModeTypeSettingPath() { return CMPath(QStringLiteral("settings/network/airplane-mode-type")); }
CMPath OrvaNetworkSoftApAutoEnabledSettingsPath() { return CMPath(QStringLiteral("settings/network/softap-auto-enabled")); }
CMPath OrvaNetworkSoftApDefaultSsidSettingsPath() { return CMPath(QStringLiteral("settings/network/softap-default-ssid")); }
CMPath OrvaNetworkSoftApConfigSettingsPath() { return CMPath(QStringLiteral("settings/network/softap-config")); }
CMPath OrvaNetworkWifiRestartCriteriaPath() { return CMPath(QStringLiteral("settings/network/wifi-restart-criteria")); }
CMPath OrvaNetworkWiredInterfacePath() { return CMPath(QStringLiteral("interfaces/wired")); }
CMPath OrvaNetworkWirelessInterfacePath() { return CMPath(QStringLiteral("interfaces/wireless")); }
CMPath OrvaWebserverPortPath() { return CMPath(QStringLiteral("webserver/port")); }
// clang-format on

QString OrvaNetworkName()
{
    return QStringLiteral("Networking");
}

int OrvaNetworkSoftApTimeout()
{
    return 60000;
}
