// SPDX-License-Identifier: Apache-2.0
#include "backend/fake/networkinglowlevelfake.h"

#include "backend/fake/defaultroute.h"
#include "backend/networklistener.h"
#include "core/dbglog.h"

#include <QFile>
#include <QTimer>

#include <cstdlib>
#include <utility>

namespace {

ORVA_LOGGER(fakeLogger, "Networking_LowLevel_Fake")

constexpr int connectDelayMs = 1000;
constexpr int scanDelayMs = 1000;
constexpr int wpsDelayMs = 3000;
constexpr int networkCount = 3;

OrvaNetworkAddress address(const QString& ip, qint32 prefix, OrvaNetworkAddressProtocol protocol,
                           OrvaNetworkAddressScope scope, bool dhcp)
{
    OrvaNetworkAddress result;
    result.setIp(ip);
    result.setPrefix(prefix);
    result.setProtocol(protocol);
    result.setScope(scope);
    result.setDhcp(dhcp);
    return result;
}

/// The addresses that others can reach; link-local ones, which carry a scope identifier, are none.
OrvaList<OrvaNetworkAddress> addressesOf(const QNetworkInterface& interface)
{
    OrvaList<OrvaNetworkAddress> list;
    const auto entries = interface.addressEntries();
    for (const QNetworkAddressEntry& entry : entries) {
        const QHostAddress ip = entry.ip();
        const bool isIPv4 = ip.protocol() == QAbstractSocket::IPv4Protocol;
        const bool isIPv6 = ip.protocol() == QAbstractSocket::IPv6Protocol;
        if (isIPv4 || (isIPv6 && ip.scopeId().isEmpty()))
            list.append(address(ip.toString(), entry.prefixLength(),
                                isIPv4 ? OrvaNetworkAddressProtocol::IPv4
                                       : OrvaNetworkAddressProtocol::IPv6,
                                OrvaNetworkAddressScope::Global, true));
    }
    return list;
}

OrvaList<OrvaNetworkAddress> loopbackAddresses()
{
    return {address(QStringLiteral("127.0.0.1"), 8, OrvaNetworkAddressProtocol::IPv4,
                    OrvaNetworkAddressScope::LinkLocal, false),
            address(QStringLiteral("::1"), 128, OrvaNetworkAddressProtocol::IPv6,
                    OrvaNetworkAddressScope::LinkLocal, false)};
}

OrvaList<OrvaNetworkAddress> onlyIPv4(const QString& ip)
{
    OrvaNetworkAddress result;
    result.setIp(ip);
    result.setProtocol(OrvaNetworkAddressProtocol::IPv4);
    return {result};
}

qint32 drawBelow(qint32 limit)
{
    return static_cast<qint32>(random() % limit);
}

QVector<qint32> drawIdentifiers()
{
    QVector<qint32> identifiers;
    while (identifiers.size() < networkCount) {
        const qint32 identifier = drawBelow(8);
        if (!identifiers.contains(identifier))
            identifiers.append(identifier);
    }
    return identifiers;
}

OrvaNetworkScanResult drawNetwork(qint32 index, qint32 identifier)
{
    OrvaNetworkScanResult network;
    network.setSignal(drawBelow(30) - 80);
    network.setSnr(drawBelow(30) - 80);
    network.setChannel(drawBelow(13) + 1);
    network.setSsid(QStringLiteral("fakenet") + QString::number(identifier));
    network.setBssid(QStringLiteral("00:01:02:03:04:%1").arg(index, 2, 16, QLatin1Char('0')));
    network.setEncryption(drawBelow(3) == 0 ? OrvaNetworkProfileWirelessEncryption::None
                                            : OrvaNetworkProfileWirelessEncryption::WpaPsk);
    return network;
}

OrvaNetworkInterface wpsCredentials()
{
    OrvaNetworkInterface credentials;
    credentials.setDhcp(true);
    credentials.setSsid(QStringLiteral("11GN_AP"));
    credentials.setEncryption(OrvaNetworkProfileWirelessEncryption::WpaPsk);
    credentials.setKey(QStringLiteral("dummykey"));
    credentials.setBssid(QStringLiteral("00:01:02:03:04:05"));
    return credentials;
}

} // namespace

Networking_LowLevel_Fake::Networking_LowLevel_Fake(NetworkListener& listener)
    : m_listener(listener)
{
}

bool Networking_LowLevel_Fake::scanNetworks()
{
    const auto trace = dbglog_scopedFunction(fakeLogger(), Q_FUNC_INFO);
    QTimer::singleShot(scanDelayMs, this, &Networking_LowLevel_Fake::on_scanResults);
    return true;
}

bool Networking_LowLevel_Fake::applyProfile(const OrvaNetworkProfile& profile)
{
    const auto trace = dbglog_scopedFunction(fakeLogger(), Q_FUNC_INFO);
    if (!disconnect())
        return false;
    m_profileType = profile.type();
    LOG4CPLUS_INFO(fakeLogger(),
                   "Using " << static_cast<qint32>(m_profileType) << " profile (dummy)");
    QTimer::singleShot(connectDelayMs, this, &Networking_LowLevel_Fake::on_connect_delayed);
    return true;
}

bool Networking_LowLevel_Fake::disconnect()
{
    const auto trace = dbglog_scopedFunction(fakeLogger(), Q_FUNC_INFO);
    m_listener.setLinkStatus(QStringLiteral("eth0"), false);
    m_listener.setLinkStatus(QStringLiteral("wlan0"), false);
    return true;
}

bool Networking_LowLevel_Fake::forceWifiReconnect()
{
    LOG4CPLUS_INFO(fakeLogger(), "Wifi reconnect requested, nothing to do");
    return true;
}

bool Networking_LowLevel_Fake::performWpsPbc(const CMReply<OrvaNetworkInterface>& reply)
{
    LOG4CPLUS_INFO(fakeLogger(), "Generating fake WPS results");
    if (m_wpsReply)
        return false;
    m_wpsReply = reply;
    QTimer::singleShot(wpsDelayMs, this, &Networking_LowLevel_Fake::on_wps_timeout);
    return true;
}

bool Networking_LowLevel_Fake::performWpsPin(const QString&,
                                             const CMReply<OrvaNetworkInterface>& reply)
{
    return performWpsPbc(reply);
}

bool Networking_LowLevel_Fake::startSoftAp(const OrvaNetworkProfileSoftApSettings&)
{
    const auto trace = dbglog_scopedFunction(fakeLogger(), Q_FUNC_INFO);
    return true;
}

bool Networking_LowLevel_Fake::stopSoftAp(const OrvaNetworkProfileSoftApSettings&)
{
    const auto trace = dbglog_scopedFunction(fakeLogger(), Q_FUNC_INFO);
    return true;
}

QString Networking_LowLevel_Fake::getEthernetMAC()
{
    const QNetworkInterface interface = getInterface();
    return interface.isValid() ? interface.hardwareAddress() : QStringLiteral("00:01:02:03:04:05");
}

QString Networking_LowLevel_Fake::getWirelessMAC()
{
    return QStringLiteral("0A:0B:0C:0D:0E:0F");
}

OrvaNetworkInfo Networking_LowLevel_Fake::getNetworkState()
{
    const auto addresses = addressesOf(getInterface());
    OrvaNetworkWiredInterface wired;
    wired.setAddresses(addresses.isEmpty() ? loopbackAddresses() : addresses);
    wired.setMac(getEthernetMAC());
    wired.setState(OrvaNetworkState::Connected);

    // No wireless part at all: an empty one would wipe what is published.
    OrvaNetworkInfo info;
    info.setWired(wired);
    info.setGateways(onlyIPv4(QStringLiteral("10.0.0.1")));
    info.setDns(onlyIPv4(QStringLiteral("8.8.8.8")));
    LOG4CPLUS_DEBUG(fakeLogger(), "getNetworkState: " << info);
    return info;
}

bool Networking_LowLevel_Fake::cableStatus()
{
    return true;
}

bool Networking_LowLevel_Fake::hasWireless()
{
    return true;
}

double Networking_LowLevel_Fake::getWirelessRssi()
{
    return 0.0;
}

Networking_LowLevel::InterfaceStatus Networking_LowLevel_Fake::interfaceStatus(const QString&)
{
    return Idle;
}

void Networking_LowLevel_Fake::on_wps_timeout()
{
    if (!m_wpsReply)
        return;
    const OrvaNetworkInterface credentials = wpsCredentials();
    LOG4CPLUS_INFO(fakeLogger(), "WPS results: " << credentials);
    // The session is over before it is answered: the answer may start the next session.
    const auto reply = std::exchange(m_wpsReply, std::nullopt);
    reply->finish(credentials);
}

void Networking_LowLevel_Fake::on_connect_delayed()
{
    if (m_profileType == OrvaNetworkProfileType::Wireless) {
        LOG4CPLUS_WARN(fakeLogger(),
                       "Wireless hack: always report connection up but don't configure "
                       "anything");
        m_listener.setLinkStatus(QStringLiteral("wlan0"), true);
    } else {
        m_listener.setLinkStatus(QStringLiteral("eth0"), true);
    }
    Q_EMIT AddressesChanged();
}

void Networking_LowLevel_Fake::on_scanResults()
{
    const QVector<qint32> identifiers = drawIdentifiers();
    QVector<OrvaNetworkScanResult> networks;
    for (qint32 index = 0; index < networkCount; ++index)
        networks.append(drawNetwork(index, identifiers.at(index)));
    Q_EMIT ScanResults(networks);
}

QNetworkInterface Networking_LowLevel_Fake::getInterface() const
{
    QFile routingTable(QStringLiteral("/proc/net/route"));
    if (!routingTable.open(QIODevice::ReadOnly)) {
        LOG4CPLUS_FATAL(fakeLogger(), "Couldn't open /proc/net/route");
        return QNetworkInterface();
    }
    const QString name = defaultRouteInterface(routingTable.readAll());
    if (name.isEmpty()) {
        LOG4CPLUS_ERROR(fakeLogger(), "Could not determine ethernet interface!");
        return QNetworkInterface();
    }
    return QNetworkInterface::interfaceFromName(name);
}
