// SPDX-License-Identifier: Apache-2.0
#include "world/real/enginetraces.h"

#include "log.h"

#include <array>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/nexthop.h>
#include <netlink/route/route.h>
#include <optional>
#include <sys/socket.h>
#include <sys/time.h>
#include <vector>

namespace {

using Socket = std::unique_ptr<nl_sock, void (*)(nl_sock*)>;
using Object = std::unique_ptr<nl_object, void (*)(nl_object*)>;

/// An address, or a route that a DHCP client or a router's advertisement has brought.
struct Trace
{
    QString words; ///< tell it from every other one
    int family;
    bool marked; ///< as dhcpcd does
    Object object;
    int (*remove)(nl_sock* socket, nl_object* object);
};

/// True for a success; a fault is logged.
bool isRead(int fault)
{
    if (fault < 0)
        qCWarning(lcLumod, "Cannot read what dhcpcd has left: %s", nl_geterror(fault));
    return fault >= 0;
}

/// None where that fails.
Socket connectToKernel()
{
    Socket socket(nl_socket_alloc(), nl_socket_free);
    if (!socket || !isRead(nl_connect(socket.get(), NETLINK_ROUTE)))
        return {nullptr, nl_socket_free};
    const timeval limit{1, 0}; // the kernel answers at once, but nothing may hold us up for ever
    setsockopt(nl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    return socket;
}

/// Without the length of a prefix that is one address.
QString wordsOf(nl_addr* address)
{
    constexpr std::size_t longest = 128;
    std::array<char, longest> text{};
    return QString::fromLatin1(nl_addr2str(address, text.data(), text.size()));
}

Object kept(nl_object* object)
{
    nl_object_get(object);
    return {object, nl_object_put};
}

int removeAddress(nl_sock* socket, nl_object* object)
{
    return rtnl_addr_delete(socket, reinterpret_cast<rtnl_addr*>(object), 0);
}

int removeRoute(nl_sock* socket, nl_object* object)
{
    return rtnl_route_delete(socket, reinterpret_cast<rtnl_route*>(object), 0);
}

void addAddress(nl_object* object, int index, std::vector<Trace>& traces)
{
    auto* address = reinterpret_cast<rtnl_addr*>(object);
    if (rtnl_addr_get_ifindex(address) != index || rtnl_addr_get_scope(address) == RT_SCOPE_LINK)
        return;
    traces.push_back({wordsOf(rtnl_addr_get_local(address)), rtnl_addr_get_family(address),
                      (rtnl_addr_get_flags(address) & IFA_F_NOPREFIXROUTE) != 0, kept(object),
                      removeAddress});
}

void addRoute(nl_object* object, int index, std::vector<Trace>& traces)
{
    auto* route = reinterpret_cast<rtnl_route*>(object);
    const int protocol = rtnl_route_get_protocol(route);
    auto* hop = rtnl_route_get_nnexthops(route) > 0 ? rtnl_route_nexthop_n(route, 0) : nullptr;
    if ((protocol != RTPROT_DHCP && protocol != RTPROT_RA) || !hop ||
        rtnl_route_nh_get_ifindex(hop) != index)
        return;
    const auto words =
        QStringLiteral("%1 via %2 metric %3")
            .arg(wordsOf(rtnl_route_get_dst(route)), wordsOf(rtnl_route_nh_get_gateway(hop)))
            .arg(rtnl_route_get_priority(route));
    traces.push_back({words, rtnl_route_get_family(route), true, kept(object), removeRoute});
}

template <class Add>
bool addAll(int fault, nl_cache* list, Add addOne)
{
    if (!isRead(fault))
        return false;
    for (auto* object = nl_cache_get_first(list); object; object = nl_cache_get_next(object))
        addOne(object);
    nl_cache_free(list);
    return true;
}

/// Routes first, which their address's end would take along. Nothing where they cannot be read.
std::optional<std::vector<Trace>> tracesOn(int index, const Socket& socket)
{
    std::vector<Trace> traces;
    nl_cache* list = nullptr;
    if (!socket)
        return {};
    int fault = rtnl_route_alloc_cache(socket.get(), AF_UNSPEC, 0, &list);
    if (!addAll(fault, list, [&](nl_object* object) { addRoute(object, index, traces); }))
        return {};
    fault = rtnl_addr_alloc_cache(socket.get(), &list);
    if (!addAll(fault, list, [&](nl_object* object) { addAddress(object, index, traces); }))
        return {};
    return traces;
}

void removeOne(const Socket& socket, const Trace& trace)
{
    const int fault = trace.remove(socket.get(), trace.object.get());
    if (fault == 0)
        qCInfo(lcLumod) << "Took back what dhcpcd has left:" << trace.words;
    else
        qCWarning(lcLumod, "Cannot take %s back: %s", qUtf8Printable(trace.words),
                  nl_geterror(fault));
}

} // namespace

bool EngineTraces::begin(int index)
{
    if (m_index == index)
        return true;
    const auto traces = tracesOn(index, connectToKernel());
    if (!traces)
        return false;
    m_index = index;
    m_foreign.clear();
    m_known.clear();
    for (const auto& trace : *traces)
        m_foreign.insert(trace.words);
    return true;
}

void EngineTraces::remove(Family family)
{
    if (m_index == 0)
        return;
    const auto socket = connectToKernel();
    const auto traces = tracesOn(m_index, socket);
    if (!traces)
        return;
    if (family == Family::Both)
        m_index = 0;
    for (const auto& trace : *traces) {
        const bool isMeant = family == Family::Both || trace.family == AF_INET;
        const bool isOurs = trace.marked || m_known.contains(trace.words);
        if (isMeant && isOurs && !m_foreign.contains(trace.words))
            removeOne(socket, trace);
    }
}
