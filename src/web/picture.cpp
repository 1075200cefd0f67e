// SPDX-License-Identifier: Apache-2.0
#include "picture.h"

#include "network/networkpaths.h"

#include <QUrl>

#include <algorithm>

namespace {

/// The addressing of a configured interface.
QVariantHash addressing(const OrvaNetworkInterface& interface)
{
    return {{QStringLiteral("dhcp"), interface.dhcp()},
            {QStringLiteral("ip"), interface.ip()},
            {QStringLiteral("netmask"), interface.netmask()},
            {QStringLiteral("gateway"), interface.gateway()},
            {QStringLiteral("dns"), OrvaCodec<QStringList>::encode(interface.dns())}};
}

QVariantHash link(OrvaNetworkState state, OrvaNetworkConnectingStatus connecting,
                  const OrvaList<OrvaNetworkAddress>& addresses)
{
    QVariantList texts;
    for (const OrvaNetworkAddress& address : addresses)
        texts.append(address.ip());
    return {{QStringLiteral("state"), OrvaNetworkState::toString(state)},
            {QStringLiteral("connecting"), OrvaNetworkConnectingStatus::toString(connecting)},
            {QStringLiteral("addresses"), texts}};
}

QVariantHash wired(const OrvaNetworkWiredInterface& interface)
{
    QVariantHash picture =
        link(interface.state(), interface.connectingStatus(), interface.addresses());
    picture.insert(QStringLiteral("cable"), interface.cableConnected());
    return picture;
}

QVariantHash wireless(const OrvaNetworkWirelessInterface& interface)
{
    QVariantHash picture =
        link(interface.state(), interface.connectingStatus(), interface.addresses());
    picture.insert(QStringLiteral("ssid"), interface.ssid());
    picture.insert(QStringLiteral("signal"), interface.signalLevel());
    picture.insert(QStringLiteral("wps"), OrvaNetworkWpsStatus::toString(interface.wps().status()));
    picture.insert(QStringLiteral("wpsError"), interface.wps().lastError());
    return picture;
}

/// The known networks, most preferred first.
QVariantList known(const OrvaNetworkProfile& profile, const OrvaNetworkInfo& info)
{
    const auto isSuspect = [&info](const QString& ssid) {
        const auto networks = info.wirelessNetworks();
        return std::any_of(networks.begin(), networks.end(), [&ssid](const auto& network) {
            return network.ssid() == ssid && network.credentialsSuspect();
        });
    };
    QVariantList list;
    for (const OrvaNetworkInterface& network : profile.wirelessNetworks())
        list.append(
            QVariantHash{{QStringLiteral("ssid"), network.ssid()},
                         {QStringLiteral("secure"),
                          network.encryption() != OrvaNetworkProfileWirelessEncryption::None},
                         {QStringLiteral("suspect"), isSuspect(network.ssid())}});
    return list;
}

QVariantHash softAp(const HostLink& host, const OrvaNetworkInfo& info)
{
    QString name = QString();
    for (const auto& settings :
         host.value(OrvaNetworkProfilePath()).networkProfile().softApSettings())
        name = settings.ssid();
    for (const auto& request : host.value(OrvaNetworkSoftApRequestsPath()).softApRequests()) {
        if (!request.settings().ssid().isEmpty())
            name = request.settings().ssid();
    }
    return {
        {QStringLiteral("state"), OrvaNetworkState::toString(info.softAp().state())},
        {QStringLiteral("name"), name},
        {QStringLiteral("stations"),
         int(host.value(OrvaNetworkConnectedSoftApStationsPath()).stringList().size())},
        {QStringLiteral("auto"), host.value(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_()}};
}

/// The addresses of the page in the home network: the published one, and its names on that port.
QVariantList waysTo(const QString& published, const QStringList& names)
{
    const QUrl url(published);
    if (url.host().isEmpty() || url.host() == QLatin1String("localhost"))
        return {};
    QVariantList ways = {published};
    for (const QString& name : names) {
        QUrl named = url;
        named.setHost(name);
        ways.append(named.toString());
    }
    return ways;
}

} // namespace

QVector<CMPath> picturePaths()
{
    return {OrvaNetworkInfoPath(),
            OrvaNetworkProfilePath(),
            OrvaNetworkLocalWebserverUrlPath(),
            OrvaNetworkConnectingMessage(),
            OrvaNetworkConnectedSoftApStationsPath(),
            OrvaNetworkSoftApRequestsPath(),
            OrvaNetworkSoftApAutoEnabledSettingsPath(),
            OrvaWebserverPortPath()};
}

QVariantHash statePicture(const HostLink& host, bool homeNetwork, const QStringList& names)
{
    if (!host.isPresent())
        return {{QStringLiteral("host"), false}, {QStringLiteral("ways"), QVariantList()}};
    const QString url = host.value(OrvaNetworkLocalWebserverUrlPath()).string_();
    const OrvaNetworkInfo info = host.value(OrvaNetworkInfoPath()).networkInfo();
    const OrvaNetworkProfile profile = host.value(OrvaNetworkProfilePath()).networkProfile();
    return {{QStringLiteral("host"), true},
            {QStringLiteral("state"), OrvaNetworkState::toString(info.state())},
            {QStringLiteral("wired"), wired(info.wired())},
            {QStringLiteral("wireless"), wireless(info.wireless())},
            {QStringLiteral("known"), known(profile, info)},
            {QStringLiteral("wiredAddress"), addressing(profile.wired())},
            {QStringLiteral("wirelessAddress"), addressing(profile.wireless())},
            {QStringLiteral("softAp"), softAp(host, info)},
            {QStringLiteral("airplane"), info.airplaneMode()},
            {QStringLiteral("message"), host.value(OrvaNetworkConnectingMessage()).string_()},
            {QStringLiteral("ways"), homeNetwork ? waysTo(url, names) : QVariantList()}};
}

QVariantList networksPicture(const OrvaList<OrvaNetworkScanResult>& seen)
{
    auto sorted = seen;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
        return left.signal() > right.signal();
    });
    QStringList named;
    QVariantList list;
    for (const OrvaNetworkScanResult& network : sorted) {
        if (network.ssid().isEmpty() || named.contains(network.ssid()))
            continue;
        named.append(network.ssid());
        list.append(
            QVariantHash{{QStringLiteral("ssid"), network.ssid()},
                         {QStringLiteral("signal"), network.signal()},
                         {QStringLiteral("security"),
                          OrvaNetworkProfileWirelessEncryption::toString(network.encryption())}});
    }
    return list;
}
