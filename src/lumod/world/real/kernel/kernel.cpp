// SPDX-License-Identifier: Apache-2.0
#include "world/real/kernel/kernel.h"

#include "log.h"
#include "world/real/kernel/interfacechanges.h"

#include <QHostAddress>
#include <QtEndian>

#include <cerrno>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>
#include <sys/socket.h>

namespace {

constexpr int settleMilliseconds = 10;
constexpr int retryMilliseconds = 1000;
constexpr int readingShare = 10; ///< of the time, at most one part in so many goes into reading
constexpr int eventBuffer = 1 << 20;

QString textOf(const nl_addr* address)
{
    if (!address)
        return {};
    const void* bytes = nl_addr_get_binary_addr(address);
    if (nl_addr_get_family(address) == AF_INET && nl_addr_get_len(address) == 4)
        return QHostAddress(qFromBigEndian<quint32>(bytes)).toString();
    if (nl_addr_get_family(address) == AF_INET6 && nl_addr_get_len(address) == 16)
        return QHostAddress(static_cast<const quint8*>(bytes)).toString();
    return {};
}

QString macOf(const nl_addr* address)
{
    if (!address)
        return {};
    const QByteArray bytes(static_cast<const char*>(nl_addr_get_binary_addr(address)),
                           static_cast<int>(nl_addr_get_len(address)));
    return QString::fromLatin1(bytes.toHex(':'));
}

void takeLink(rtnl_link* link, KernelLink& into)
{
    const auto flags = rtnl_link_get_flags(link);
    into.index = rtnl_link_get_ifindex(link);
    into.name = QString::fromUtf8(rtnl_link_get_name(link));
    into.mac = macOf(rtnl_link_get_addr(link));
    into.ours = qstrcmp(rtnl_link_get_ifalias(link), madeByUs) == 0;
    into.up = (flags & IFF_UP) != 0;
    into.carrier = (flags & IFF_LOWER_UP) != 0;
}

void takeAddress(rtnl_addr* addr, KernelLink& into)
{
    constexpr unsigned unusable = IFA_F_TENTATIVE | IFA_F_DEPRECATED | IFA_F_DADFAILED;
    KernelAddress address;
    address.address = textOf(rtnl_addr_get_local(addr));
    address.prefix = rtnl_addr_get_prefixlen(addr);
    address.ipv6 = rtnl_addr_get_family(addr) == AF_INET6;
    address.linkLocal = rtnl_addr_get_scope(addr) == RT_SCOPE_LINK;
    address.usable = (rtnl_addr_get_flags(addr) & unusable) == 0;
    if (!address.address.isEmpty())
        into.addresses.append(address);
}

bool isDefault(rtnl_route* route)
{
    const auto* destination = rtnl_route_get_dst(route);
    return rtnl_route_get_table(route) == RT_TABLE_MAIN &&
           rtnl_route_get_type(route) == RTN_UNICAST && destination &&
           nl_addr_get_prefixlen(destination) == 0;
}

void takeRoute(rtnl_route* route, QHash<int, KernelLink>& links)
{
    if (!isDefault(route))
        return;
    for (int i = 0; i < rtnl_route_get_nnexthops(route); ++i) {
        auto* hop = rtnl_route_nexthop_n(route, i);
        const auto link = links.find(rtnl_route_nh_get_ifindex(hop));
        const DefaultRoute found{textOf(rtnl_route_nh_get_gateway(hop)),
                                 rtnl_route_get_priority(route)};
        if (link == links.end() || found.gateway.isEmpty())
            continue;
        auto& best = rtnl_route_get_family(route) == AF_INET6 ? link->route6 : link->route;
        if (best.gateway.isEmpty() || found.metric < best.metric)
            best = found;
    }
}

} // namespace

bool KernelAddress::operator==(const KernelAddress& other) const
{
    return address == other.address && prefix == other.prefix && ipv6 == other.ipv6 &&
           linkLocal == other.linkLocal && usable == other.usable;
}

bool DefaultRoute::operator==(const DefaultRoute& other) const
{
    return gateway == other.gateway && metric == other.metric;
}

bool KernelLink::operator==(const KernelLink& other) const
{
    return index == other.index && name == other.name && mac == other.mac && ours == other.ours &&
           up == other.up && carrier == other.carrier && addresses == other.addresses &&
           route == other.route && route6 == other.route6;
}

bool KernelLink::has(const QString& address) const
{
    return std::any_of(addresses.begin(), addresses.end(), [&address](const auto& one) {
        return one.address == address && one.usable;
    });
}

Kernel::Kernel(QObject* parent)
    : QObject(parent)
{
    m_settle.setSingleShot(true);
    m_settle.setTimerType(Qt::PreciseTimer);
    connect(&m_settle, &QTimer::timeout, this, &Kernel::settle);
}

Kernel::~Kernel() = default;

Result<> Kernel::open()
{
    m_events.reset(nl_socket_alloc());
    if (const int fault = nl_connect(m_events.get(), NETLINK_ROUTE))
        return Failure{QStringLiteral("Cannot ask the kernel for its interfaces: ") +
                       QString::fromUtf8(nl_geterror(fault))};
    // Room for a burst; what does not fit is made up for by reading everything anyway.
    nl_socket_set_buffer_size(m_events.get(), eventBuffer, 0);
    nl_socket_set_nonblocking(m_events.get());
    nl_socket_add_memberships(m_events.get(), RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR,
                              RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE, RTNLGRP_IPV6_ROUTE, 0);
    m_queries = openRouteSocket();
    m_notifier =
        std::make_unique<QSocketNotifier>(nl_socket_get_fd(m_events.get()), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Kernel::notified);
    read();
    return {};
}

KernelLink Kernel::link(const QString& name) const
{
    for (const auto& link : m_links)
        if (link.name == name)
            return link;
    return {};
}

void Kernel::notified()
{
    m_notifier->setEnabled(false); // one turn of the loop a reading, however many there are
    const auto due = qMax<qint64>(settleMilliseconds, m_pause) - m_sinceReading.elapsed();
    if (due > 0)
        m_settle.start(static_cast<int>(due));
    else
        settle();
}

void Kernel::settle()
{
    constexpr int most = 100000; // per turn; the rest brings the next reading
    char byte = 0;
    const int fd = nl_socket_get_fd(m_events.get());
    for (int i = 0; i < most; ++i)
        if (recv(fd, &byte, sizeof byte, MSG_DONTWAIT | MSG_TRUNC) < 0 && errno != ENOBUFS)
            break;
    refresh();
    m_notifier->setEnabled(true);
}

void Kernel::refresh()
{
    const auto before = m_links;
    read();
    if (m_links != before)
        Q_EMIT changed();
}

void Kernel::read()
{
    QElapsedTimer clock;
    clock.start();
    Links links;
    if (dump(RTM_GETLINK, links) && dump(RTM_GETADDR, links) && dump(RTM_GETROUTE, links)) {
        m_links = links;
    } else {
        m_queries =
            openRouteSocket(); // what is left of the answer must not be taken for the next one's
        m_settle.start(retryMilliseconds);
    }
    m_pause = clock.elapsed() * readingShare;
    m_sinceReading.start();
}

bool Kernel::dump(int type, Links& links)
{
    const int fault = readList(m_queries, type, [&](nl_object* object) { take(object, links); });
    // An interrupted dump is complete enough: whatever interrupted it has sent a notification.
    if (fault >= 0 || fault == -NLE_DUMP_INTR)
        return true;
    qCWarning(lcLumod, "Cannot read the kernel's interfaces: %s", nl_geterror(fault));
    return false;
}

void Kernel::take(nl_object* object, Links& links)
{
    const QByteArray type = nl_object_get_type(object);
    if (type == "route/link") {
        auto* link = reinterpret_cast<rtnl_link*>(object);
        if (rtnl_link_get_family(link) == AF_UNSPEC)
            takeLink(link, links[rtnl_link_get_ifindex(link)]);
    } else if (type == "route/addr") {
        auto* address = reinterpret_cast<rtnl_addr*>(object);
        const auto link = links.find(rtnl_addr_get_ifindex(address));
        if (link != links.end())
            takeAddress(address, *link);
    } else {
        takeRoute(reinterpret_cast<rtnl_route*>(object), links);
    }
}

void Kernel::setUp(int index)
{
    if (const auto up = setInterfaceUp(index); !up)
        qCWarning(lcLumod).noquote() << "Cannot set interface" << index << "up:" << up.why();
}
