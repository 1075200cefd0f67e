#include "networksettings.h"

#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace {

template <class T>
OrvaValue valueOf(void (OrvaValue::*set)(const T&), const T& content)
{
    OrvaValue value;
    (value.*set)(content);
    return value;
}

OrvaValue number(qint32 content)
{
    return valueOf(&OrvaValue::setI32, content);
}

OrvaValue flag(bool content)
{
    return valueOf(&OrvaValue::setBool, content);
}

OrvaValue profile(const OrvaNetworkProfile& content)
{
    return valueOf(&OrvaValue::setNetworkProfile, content);
}

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
        {OrvaNetworkCurrentProfileSettingsPath(), profile(automaticProfile())},
        {OrvaNetworkBackupProfileSettingsPath(), profile(OrvaNetworkProfile())},
        {OrvaNetworkMaxAuthFailuresSettingsPath(), number(3)},
        {OrvaNetworkMaxNumberWifiNetworks(), number(10)},
        {OrvaNetworkAirplaneModeSettingPath(), flag(false)},
        {OrvaNetworkAirplaneModeTypeSettingPath(),
         valueOf(&OrvaValue::setAirplaneModeType, OrvaAirplaneModeType())},
        {OrvaNetworkSoftApAutoEnabledSettingsPath(), flag(true)},
        {OrvaNetworkSoftApDefaultSsidSettingsPath(), valueOf(&OrvaValue::setString, defaultSsid())},
        {OrvaNetworkSoftApConfigSettingsPath(), profile(softApProfile())},
        {OrvaNetworkWifiRestartCriteriaPath(),
         valueOf(&OrvaValue::setWifiRestartCriteria, OrvaNetworkWifiRestartCriteria())},
    };
}
