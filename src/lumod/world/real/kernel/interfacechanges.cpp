// SPDX-License-Identifier: Apache-2.0
#include "world/real/kernel/interfacechanges.h"

#include "world/real/kernel/nl80211.h"
#include "world/real/kernel/routesocket.h"

#include <QHostAddress>

#include <linux/nl80211.h>
#include <memory>
#include <net/if.h>
#include <netlink/attr.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <sys/socket.h>

namespace {

using RouteLink = std::unique_ptr<rtnl_link, void (*)(rtnl_link*)>;
using RouteAddress = std::unique_ptr<rtnl_addr, void (*)(rtnl_addr*)>;
using Numbers = std::unique_ptr<nl_addr, void (*)(nl_addr*)>;

Result<> outcome(int fault)
{
    if (fault < 0)
        return Failure{QString::fromUtf8(nl_geterror(fault))};
    return {};
}

Numbers numbersOf(const QString& text, int family)
{
    nl_addr* numbers = nullptr;
    nl_addr_parse(text.toLatin1().constData(), family, &numbers);
    return {numbers, nl_addr_put};
}

Result<> change(int index, const RouteLink& wanted)
{
    const RouteLink asIs(rtnl_link_alloc(), rtnl_link_put);
    rtnl_link_set_ifindex(asIs.get(), index);
    return outcome(rtnl_link_change(openRouteSocket().get(), asIs.get(), wanted.get(), 0));
}

/// For the lumod that comes after one that was killed.
Result<> mark(const QString& name)
{
    const RouteLink wanted(rtnl_link_alloc(), rtnl_link_put);
    rtnl_link_set_ifalias(wanted.get(), madeByUs);
    return change(static_cast<int>(if_nametoindex(name.toUtf8().constData())), wanted);
}

RouteAddress addressOf(int index, const QString& address, int prefix)
{
    RouteAddress wanted(rtnl_addr_alloc(), rtnl_addr_put);
    const auto local = numbersOf(QStringLiteral("%1/%2").arg(address).arg(prefix), AF_INET);
    const quint32 hosts = ~quint32(0) >> prefix;
    const auto broadcast =
        numbersOf(QHostAddress(QHostAddress(address).toIPv4Address() | hosts).toString(), AF_INET);
    rtnl_addr_set_ifindex(wanted.get(), index);
    if (local)
        rtnl_addr_set_local(wanted.get(), local.get());
    if (broadcast)
        rtnl_addr_set_broadcast(wanted.get(), broadcast.get());
    return wanted;
}

} // namespace

Result<> setInterfaceUp(int index)
{
    const RouteLink wanted(rtnl_link_alloc(), rtnl_link_put);
    rtnl_link_set_flags(wanted.get(), IFF_UP);
    return change(index, wanted);
}

Result<> setHardwareAddress(int index, const QString& mac)
{
    const RouteLink wanted(rtnl_link_alloc(), rtnl_link_put);
    const auto numbers = numbersOf(mac, AF_LLC);
    if (!numbers)
        return Failure{QStringLiteral("not a hardware address: ") + mac};
    rtnl_link_unset_flags(wanted.get(), IFF_UP);
    if (const auto down = change(index, wanted); !down)
        return down;
    rtnl_link_set_addr(wanted.get(), numbers.get());
    return change(index, wanted);
}

Result<> makeAccessPointInterface(int radio, const QString& name, const QString& mac)
{
    const auto address = QByteArray::fromHex(mac.toLatin1());
    const auto made = callNl80211(NL80211_CMD_NEW_INTERFACE, [&](nl_msg* message) {
        nla_put_u32(message, NL80211_ATTR_IFINDEX, static_cast<uint32_t>(radio));
        nla_put_string(message, NL80211_ATTR_IFNAME, name.toUtf8().constData());
        nla_put_u32(message, NL80211_ATTR_IFTYPE, NL80211_IFTYPE_AP);
        nla_put(message, NL80211_ATTR_MAC, address.size(), address.constData());
    });
    return made ? mark(name) : made;
}

void removeAccessPointInterface(int index)
{
    static_cast<void>(callNl80211(NL80211_CMD_DEL_INTERFACE, [index](nl_msg* message) {
        nla_put_u32(message, NL80211_ATTR_IFINDEX, static_cast<uint32_t>(index));
    }));
}

Result<> setOnlyAddress(const KernelLink& link, const QString& address, int prefix)
{
    const auto socket = openRouteSocket();
    for (const auto& old : link.addresses) {
        if (!old.ipv6 && (old.address != address || old.prefix != prefix))
            rtnl_addr_delete(socket.get(), addressOf(link.index, old.address, old.prefix).get(), 0);
    }
    if (address.isEmpty())
        return {};
    return outcome(
        rtnl_addr_add(socket.get(), addressOf(link.index, address, prefix).get(), NLM_F_REPLACE));
}
