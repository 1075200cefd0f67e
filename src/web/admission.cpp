// SPDX-License-Identifier: Apache-2.0
#include "admission.h"

#include <algorithm>

namespace {

/// An IPv4 address that a socket of IPv6 reports is just that.
QHostAddress plain(const QHostAddress& address)
{
    bool isIPv4 = false;
    const quint32 ip = address.toIPv4Address(&isIPv4);
    QHostAddress result = isIPv4 ? QHostAddress(ip) : address;
    result.setScopeId(QString());
    return result;
}

bool isBetween(const QHostAddress& local, const QHostAddress& peer,
               const OrvaList<OrvaNetworkAddress>& addresses)
{
    return std::any_of(addresses.begin(), addresses.end(), [&](const OrvaNetworkAddress& address) {
        const QHostAddress own(address.ip());
        return own == local && peer.protocol() == own.protocol() &&
               peer.isInSubnet(own, address.prefix());
    });
}

/// A Host header without its port.
QByteArray nameOf(const QByteArray& host)
{
    const int end = host.startsWith('[') ? host.indexOf(']') + 1 : host.indexOf(':');
    return end > 0 ? host.left(end) : host;
}

} // namespace

WayIn wayIn(const QHostAddress& localAddress, const QHostAddress& peerAddress,
            const OrvaNetworkInfo& info, bool homeNetwork)
{
    const QHostAddress local = plain(localAddress);
    const QHostAddress peer = plain(peerAddress);
    if (local.isLoopback() && peer.isLoopback())
        return WayIn::Loopback;
    for (const OrvaNetworkSoftAp& ap : info.softAp().aps()) {
        if (isBetween(local, peer, ap.addresses()))
            return WayIn::SoftAp;
    }
    if (homeNetwork && isBetween(local, peer, info.wired().addresses()))
        return WayIn::Wired;
    if (homeNetwork && isBetween(local, peer, info.wireless().addresses()))
        return WayIn::Wireless;
    return WayIn::Refused;
}

bool isOwnHost(const QByteArray& host, const QHostAddress& localAddress, const QStringList& names)
{
    const QHostAddress local = plain(localAddress);
    const QString name = QString::fromLatin1(nameOf(host));
    if (local.isLoopback() && name == QLatin1String("localhost"))
        return true;
    if (names.contains(name, Qt::CaseInsensitive))
        return true;
    QString text = name;
    if (text.startsWith(QLatin1Char('[')) && text.endsWith(QLatin1Char(']')))
        text = text.mid(1, text.size() - 2);
    const QHostAddress asked(text);
    return !asked.isNull() && plain(asked) == local;
}

bool isSameOrigin(const QByteArray& host, const QByteArray& origin, const QByteArray& site)
{
    return (origin.isEmpty() || origin == "http://" + host) &&
           (site.isEmpty() || site == "same-origin" || site == "none");
}

bool isSameSecret(const QByteArray& left, const QByteArray& right)
{
    int difference = left.size() ^ right.size();
    for (int at = 0; at < qMin(left.size(), right.size()); ++at)
        difference |= left.at(at) ^ right.at(at);
    return difference == 0;
}
