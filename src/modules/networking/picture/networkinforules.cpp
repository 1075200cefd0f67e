#include "picture/networkinforules.h"

#include "network/networkrules.h"
#include "networkinglog.h"

#include <algorithm>
#include <optional>

namespace {

/// `target` with the fields named, as `source` has them, their absence included.
template <class Record>
Record withFields(const Record& target, const Record& source, const QStringList& fields)
{
    QVariantHash hash = target.__hash();
    for (const QString& field : fields) {
        if (source.__contains(field))
            hash.insert(field, source.__hash().value(field));
        else
            hash.remove(field);
    }
    return Record(hash);
}

bool isUp(OrvaNetworkState state)
{
    return state != OrvaNetworkState::Disconnected;
}

bool isIPv4(const OrvaNetworkAddress& address)
{
    return address.protocol() == OrvaNetworkAddressProtocol::IPv4;
}

QStringList ipv4Texts(const OrvaList<OrvaNetworkAddress>& addresses)
{
    QStringList texts;
    for (const OrvaNetworkAddress& address : addresses) {
        if (isIPv4(address))
            texts << address.ip();
    }
    return texts;
}

/// What the profile form of both interfaces has.
OrvaNetworkInterface interfaceProfile(const OrvaNetworkInfo& info, OrvaNetworkState state,
                                      const OrvaList<OrvaNetworkAddress>& addresses)
{
    OrvaNetworkInterface interface;
    interface.setConnected(isUp(state));
    if (!addresses.isEmpty() && isIPv4(addresses.first())) {
        interface.setDhcp(addresses.first().dhcp());
        interface.setIp(addresses.first().ip());
        interface.setNetmask(orvaPrefixToNetmask(addresses.first().prefix()));
    }
    interface.setDns(ipv4Texts(info.dns()));
    interface.setGateway(ipv4Texts(info.gateways()).value(0));
    return interface;
}

OrvaNetworkInterface wirelessProfile(const OrvaNetworkInfo& info)
{
    const OrvaNetworkWirelessInterface wireless = info.wireless();
    OrvaNetworkInterface interface = interfaceProfile(info, wireless.state(), wireless.addresses());
    interface.setSsid(wireless.ssid());
    interface.setBssid(wireless.bssid().toUpper());
    interface.setEncryption(wireless.encryption());
    interface.setFrequency(wireless.frequency());
    interface.setSignalLevel(wireless.signalLevel());
    return interface;
}

OrvaList<OrvaNetworkProfileSoftApSettings> softApProfiles(const OrvaNetworkInfo& info)
{
    OrvaList<OrvaNetworkProfileSoftApSettings> list;
    const auto aps = info.softAp().aps();
    for (const OrvaNetworkSoftAp& ap : aps) {
        const auto addresses = ap.addresses();
        if (addresses.isEmpty())
            continue;
        OrvaNetworkProfileSoftApSettings settings(ap);
        settings.setApAddress(addresses.first().ip());
        settings.setApNetmask(orvaPrefixToNetmask(addresses.first().prefix()));
        list.append(settings);
    }
    return list;
}

/// Where a connected interface is reached; nothing where it has no address.
std::optional<QString> hostOf(OrvaNetworkState state, const OrvaList<OrvaNetworkAddress>& addresses)
{
    if (state != OrvaNetworkState::Connected || addresses.isEmpty())
        return std::nullopt;
    return addresses.first().ip();
}

QString webserverHost(const OrvaNetworkInfo& info)
{
    if (const auto host = hostOf(info.wired().state(), info.wired().addresses()))
        return *host;
    if (const auto host = hostOf(info.wireless().state(), info.wireless().addresses()))
        return *host;
    const auto aps = info.softAp().aps();
    const auto addresses = aps.isEmpty() ? OrvaList<OrvaNetworkAddress>() : aps.first().addresses();
    return hostOf(info.softAp().state(), addresses).value_or(QString());
}

} // namespace

OrvaNetworkState calculateNetworkInfoState(const OrvaNetworkInfo& info)
{
    const OrvaNetworkState wired = info.wired().state();
    const OrvaNetworkState wireless = info.wireless().state();
    if (wired == OrvaNetworkState::Connected || wireless == OrvaNetworkState::Connected)
        return OrvaNetworkState::Connected;
    return isUp(wired) || isUp(wireless) ? OrvaNetworkState::Disconnecting
                                         : OrvaNetworkState::Disconnected;
}

OrvaNetworkInfo withInterfaceState(OrvaNetworkInfo info, const QString& interface,
                                   OrvaNetworkState state)
{
    OrvaNetworkWiredInterface wired = info.wired();
    OrvaNetworkWirelessInterface wireless = info.wireless();
    if (interface == wired.name()) {
        wired.setState(state);
        info.setWired(wired);
    } else if (interface == wireless.name()) {
        wireless.setState(state);
        info.setWireless(wireless);
    }
    return info;
}

QSet<QString> interfacesIn(const OrvaNetworkInfo& info, OrvaNetworkState state)
{
    QSet<QString> names;
    if (info.wired().state() == state)
        names << info.wired().name();
    if (info.wireless().state() == state)
        names << info.wireless().name();
    return names;
}

OrvaNetworkInfo withSoftApState(OrvaNetworkInfo info, OrvaNetworkState state)
{
    OrvaNetworkSoftApInterface softAp = info.softAp();
    softAp.setState(state);
    info.setSoftAp(softAp);
    return info;
}

OrvaNetworkInfo withoutWpsSession(OrvaNetworkInfo info)
{
    OrvaNetworkWirelessInterface wireless = info.wireless();
    OrvaNetworkWps wps = wireless.wps();
    wps.setStatus(OrvaNetworkWpsStatus::None);
    wireless.setWps(wps);
    info.setWireless(wireless);
    return info;
}

OrvaNetworkInfo withConnectingStatus(OrvaNetworkInfo info, bool linkUp, bool wiredConfigured,
                                     bool wirelessConfigured)
{
    OrvaNetworkWiredInterface wired = info.wired();
    OrvaNetworkWirelessInterface wireless = info.wireless();
    if (linkUp) {
        wired.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
        wireless.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
    } else {
        if (wirelessConfigured)
            wireless.setConnectingStatus(OrvaNetworkConnectingStatus::Connecting);
        if (wired.cableConnected() && wiredConfigured)
            wired.setConnectingStatus(OrvaNetworkConnectingStatus::Connecting);
    }
    info.setWired(wired);
    info.setWireless(wireless);
    const bool idle = wireless.connectingStatus() == OrvaNetworkConnectingStatus::Idle;
    return idle ? withoutWpsSession(info) : info;
}

OrvaNetworkInfo withUnconfiguredIdle(OrvaNetworkInfo info, bool wiredConfigured,
                                     bool wirelessConfigured)
{
    const auto idle = [](auto interface) {
        interface.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
        return interface;
    };
    if (!wiredConfigured)
        info.setWired(idle(info.wired()));
    if (!wirelessConfigured)
        info.setWireless(idle(info.wireless()));
    return info;
}

OrvaNetworkInfo updateCredentialsSuspect(OrvaNetworkInfo info, const QString& ssid, bool suspect)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    OrvaNetworkWirelessInterface wireless = info.wireless();
    if (wireless.ssid() == ssid) {
        wireless.setCredentialsSuspect(suspect);
        info.setWireless(wireless);
    }
    auto networks = info.wirelessNetworks();
    const auto found = std::find_if(
        networks.begin(), networks.end(),
        [&](const OrvaNetworkWirelessInterface& network) { return network.ssid() == ssid; });
    if (found != networks.end()) {
        LOG4CPLUS_DEBUG(networkingLogger(),
                        "Found ssid: " << ssid << " updating credentialsSuspect to: " << suspect);
        found->setCredentialsSuspect(suspect);
        info.setWirelessNetworks(networks);
    }
    return info;
}

OrvaNetworkInfo withWorkerFields(OrvaNetworkInfo snapshot, const OrvaNetworkInfo& published)
{
    using Wired = OrvaNetworkWiredInterface;
    using Wireless = OrvaNetworkWirelessInterface;
    using SoftAps = OrvaNetworkSoftApInterface;
    snapshot.setWired(withFields(
        snapshot.wired(), published.wired(),
        {Wired::State(), Wired::Name(), Wired::CableConnected(), Wired::ConnectingStatus()}));
    snapshot.setWireless(withFields(
        snapshot.wireless(), published.wireless(),
        {Wireless::State(), Wireless::Name(), Wireless::ConnectingStatus(), Wireless::Wps()}));
    snapshot.setSoftAp(
        withFields(snapshot.softAp(), published.softAp(), {SoftAps::State(), SoftAps::Name()}));
    return withFields(snapshot, published,
                      {OrvaNetworkInfo::State(), OrvaNetworkInfo::WirelessNetworks()});
}

OrvaNetworkInfo shuttingDown(OrvaNetworkInfo info)
{
    const auto leave = [](auto interface) {
        if (interface.state() == OrvaNetworkState::Connected)
            interface.setState(OrvaNetworkState::Disconnecting);
        return interface;
    };
    info.setWired(leave(info.wired()));
    info.setWireless(leave(info.wireless()));
    info.setSoftAp(leave(info.softAp()));
    info.__remove(OrvaNetworkInfo::WirelessNetworks());
    return info;
}

OrvaNetworkInfo shutdownCancelled(OrvaNetworkInfo info, const QSet<QString>& marked)
{
    const auto comeBack = [&](auto interface) {
        if (interface.state() == OrvaNetworkState::Disconnecting &&
            marked.contains(interface.name()))
            interface.setState(OrvaNetworkState::Connected);
        return interface;
    };
    info.setWired(comeBack(info.wired()));
    info.setWireless(comeBack(info.wireless()));
    return info;
}

OrvaList<OrvaNetworkWirelessInterface> knownNetworks(const OrvaNetworkProfile& profile)
{
    OrvaList<OrvaNetworkWirelessInterface> list;
    const auto networks = profile.wirelessNetworks();
    list.reserve(networks.size());
    for (const OrvaNetworkInterface& network : networks) {
        OrvaNetworkWirelessInterface known;
        known.setSsid(network.ssid());
        list.append(known);
    }
    return list;
}

OrvaNetworkProfile currentStateProfile(const OrvaNetworkInfo& info)
{
    OrvaNetworkProfile profile;
    if (isUp(info.wired().state()))
        profile.setWired(interfaceProfile(info, info.wired().state(), info.wired().addresses()));
    const auto softAps = softApProfiles(info);
    if (!softAps.isEmpty())
        profile.setSoftApSettings(softAps);
    if (isUp(info.wireless().state()))
        profile.setWireless(wirelessProfile(info));
    return profile;
}

QString webserverUrl(const OrvaNetworkInfo& info, const QString& portSuffix)
{
    const QString host = webserverHost(info);
    if (host.isEmpty())
        return QString();
    const bool isIPv6 = host.contains(QLatin1Char(':'));
    return QStringLiteral("http://") +
           (isIPv6 ? QLatin1Char('[') + host + QLatin1Char(']') : host) + portSuffix +
           QLatin1Char('/');
}

QString webserverPortSuffix(qint32 port)
{
    return port > 0 ? QLatin1Char(':') + QString::number(port) : QString();
}
