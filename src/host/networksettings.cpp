// SPDX-License-Identifier: Apache-2.0
#include "networksettings.h"

#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace {

OrvaNetworkProfile automaticProfile()
{
    OrvaNetworkInterface wired;
    wired.setDhcp(true);
    OrvaNetworkProfile profile;
    profile.setType(OrvaNetworkProfileType::Auto);
    profile.setWired(wired);
    return profile;
}

QString defaultSsid()
{
    return QStringLiteral("Speaker");
}

OrvaNetworkProfile softApProfile()
{
    OrvaNetworkProfileSoftApSettings settings;
    settings.setSsid(defaultSsid());
    settings.setChannel(6);
    settings.setApInterface(QStringLiteral("uap0"));
    settings.setApAddress(QStringLiteral("192.168.7.1"));
    settings.setApNetmask(QStringLiteral("255.255.255.0"));
    settings.setDhcpRangeFrom(QStringLiteral("192.168.7.10"));
    settings.setDhcpRangeTo(QStringLiteral("192.168.7.100"));
    settings.setDomainName(QStringLiteral("speaker.local"));
    OrvaNetworkProfile profile;
    profile.setSoftApSettings({settings});
    return profile;
}

} // namespace

QVector<SettingDefault> networkSettingDefaults()
{
    return {
        {OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(automaticProfile())},
        {OrvaNetworkBackupProfileSettingsPath(), OrvaValue::of(OrvaNetworkProfile())},
        {OrvaNetworkRollbackProfileSettingsPath(), OrvaValue::of(OrvaNetworkProfile())},
        {OrvaNetworkMaxAuthFailuresSettingsPath(), OrvaValue::of(3)},
        {OrvaNetworkMaxNumberWifiNetworks(), OrvaValue::of(10)},
        {OrvaNetworkAirplaneModeSettingPath(), OrvaValue::of(false)},
        {OrvaNetworkAirplaneModeTypeSettingPath(), OrvaValue::of(OrvaAirplaneModeType())},
        {OrvaNetworkSoftApAutoEnabledSettingsPath(), OrvaValue::of(true)},
        {OrvaNetworkSoftApDefaultSsidSettingsPath(), OrvaValue::of(defaultSsid())},
        {OrvaNetworkSoftApConfigSettingsPath(), OrvaValue::of(softApProfile())},
        {OrvaNetworkOnlineProbeSettingsPath(), OrvaValue::of(QString())},
        {OrvaNetworkOnlineProbeBodySettingsPath(), OrvaValue::of(QString())},
        {OrvaNetworkWifiRestartCriteriaPath(), OrvaValue::of(OrvaNetworkWifiRestartCriteria())},
    };
}
