// SPDX-License-Identifier: Apache-2.0
#include "picture.h"

#include "network/networkpaths.h"

#include <QSet>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr int httpPort = 80;

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

/// The access point as it runs; while none runs, as the profile would have it.
QVariantHash softAp(const HostLink& host, const OrvaNetworkInfo& info)
{
    OrvaNetworkProfileSoftApSettings settings;
    for (const auto& configured :
         host.value(OrvaNetworkProfilePath()).networkProfile().softApSettings())
        settings = configured;
    for (const auto& request : host.value(OrvaNetworkSoftApRequestsPath()).softApRequests())
        settings = request.applied();
    return {
        {QStringLiteral("state"), OrvaNetworkState::toString(info.softAp().state())},
        {QStringLiteral("name"), settings.ssid()},
        {QStringLiteral("secured"), !settings.passphrase().isEmpty()},
        {QStringLiteral("stations"),
         int(host.value(OrvaNetworkConnectedSoftApStationsPath()).stringList().size())},
        {QStringLiteral("auto"), host.value(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_()}};
}

QVariantHash lastJoin(const OrvaNetworkLastJoin& join)
{
    return {{QStringLiteral("ssid"), join.ssid()},
            {QStringLiteral("result"), OrvaNetworkJoinResult::toString(join.result())},
            {QStringLiteral("reason"), OrvaNetworkJoinReason::toString(join.reason())},
            {QStringLiteral("when"), join.whenMs()}};
}

/// The profile on trial: how long it still is, and its id where it has one. Empty where none is.
QVariantHash trial(const OrvaNetworkPendingProfile& pending, const QString& id)
{
    if (pending.untilMs() == 0)
        return {};
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto left = std::chrono::milliseconds(pending.untilMs()) - now;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left).count();
    return {{QStringLiteral("seconds"), static_cast<qint64>(qMax<qint64>(seconds, 0))},
            {QStringLiteral("id"), id}};
}

bool isOfSoftAp(const QString& host, const OrvaNetworkInfo& info)
{
    const auto aps = info.softAp().aps();
    return std::any_of(aps.begin(), aps.end(), [&host](const OrvaNetworkSoftAp& ap) {
        const auto addresses = ap.addresses();
        return std::any_of(addresses.begin(), addresses.end(),
                           [&host](const auto& address) { return address.ip() == host; });
    });
}

/// The addresses of the page in the home network: the published one, where the device has one
/// there, and its names, under which it can be looked for before it is there.
QVariantList waysTo(const QString& published, const QStringList& names, const OrvaNetworkInfo& info)
{
    QUrl url(published.isEmpty() ? QStringLiteral("http://localhost/") : published);
    if (url.port() == httpPort)
        url.setPort(-1);
    QVariantList ways;
    if (url.host() != QLatin1String("localhost") && !isOfSoftAp(url.host(), info))
        ways.append(url.toString());
    for (const QString& name : names) {
        url.setHost(name);
        ways.append(url.toString());
    }
    return ways;
}

QVariantHash networkRow(const OrvaNetworkScanResult& network)
{
    QVariantHash row = {{QStringLiteral("ssid"), network.ssid()},
                        {QStringLiteral("signal"), network.signal()},
                        {QStringLiteral("security"),
                         OrvaNetworkProfileWirelessEncryption::toString(network.encryption())}};
    if (!network.unsupported().isEmpty())
        row.insert(QStringLiteral("unsupported"), network.unsupported());
    return row;
}

} // namespace

QVector<CMPath> picturePaths()
{
    return {OrvaNetworkInfoPath(),
            OrvaNetworkProfilePath(),
            OrvaNetworkLocalWebserverUrlPath(),
            OrvaNetworkConnectingMessage(),
            OrvaNetworkLastJoinPath(),
            OrvaNetworkPendingProfilePath(),
            OrvaNetworkStateOnlinePath(),
            OrvaNetworkConnectedSoftApStationsPath(),
            OrvaNetworkSoftApRequestsPath(),
            OrvaNetworkSoftApAutoEnabledSettingsPath(),
            OrvaWebserverPortPath()};
}

QVariantHash statePicture(const HostLink& host, bool homeNetwork, const QStringList& names,
                          const QString& trialId)
{
    if (!host.isPresent())
        return {{QStringLiteral("host"), false}, {QStringLiteral("ways"), QVariantList()}};
    const QString url = host.value(OrvaNetworkLocalWebserverUrlPath()).string_();
    const OrvaNetworkInfo info = host.value(OrvaNetworkInfoPath()).networkInfo();
    const OrvaNetworkProfile profile = host.value(OrvaNetworkProfilePath()).networkProfile();
    QVariantHash picture = {
        {QStringLiteral("host"), true},
        {QStringLiteral("state"), OrvaNetworkState::toString(info.state())},
        {QStringLiteral("wired"), wired(info.wired())},
        {QStringLiteral("wireless"), wireless(info.wireless())},
        {QStringLiteral("known"), known(profile, info)},
        {QStringLiteral("wiredAddress"), addressing(profile.wired())},
        {QStringLiteral("wirelessAddress"), addressing(profile.wireless())},
        {QStringLiteral("softAp"), softAp(host, info)},
        {QStringLiteral("airplane"), info.airplaneMode()},
        {QStringLiteral("message"), host.value(OrvaNetworkConnectingMessage()).string_()},
        {QStringLiteral("online"),
         OrvaNetworkOnline::toString(host.value(OrvaNetworkStateOnlinePath()).networkOnline())},
        {QStringLiteral("lastJoin"),
         lastJoin(host.value(OrvaNetworkLastJoinPath()).networkLastJoin())},
        {QStringLiteral("ways"), homeNetwork ? waysTo(url, names, info) : QVariantList()}};
    const QVariantHash pending =
        trial(host.value(OrvaNetworkPendingProfilePath()).networkPendingProfile(), trialId);
    if (!pending.isEmpty())
        picture.insert(QStringLiteral("trial"), pending);
    return picture;
}

QVariantList networksPicture(const OrvaList<OrvaNetworkScanResult>& seen,
                             const OrvaList<OrvaNetworkScanResult>& unsupported)
{
    // One that can be joined hides another of its name that cannot.
    QVector<OrvaNetworkScanResult> sorted;
    QSet<QString> joinable;
    for (const OrvaNetworkScanResult& network : seen) {
        sorted.append(network);
        joinable.insert(network.ssid());
    }
    for (const OrvaNetworkScanResult& network : unsupported) {
        if (!joinable.contains(network.ssid()))
            sorted.append(network);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
        return left.signal() > right.signal();
    });
    QSet<QString> named = {QString()};
    QVariantList list;
    for (const OrvaNetworkScanResult& network : std::as_const(sorted)) {
        if (named.contains(network.ssid()))
            continue;
        named.insert(network.ssid());
        list.append(networkRow(network));
    }
    return list;
}
