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
    bool marked;   ///< as dhcpcd does
    Object object;
    int (*remove)(nl_sock* socket, nl_object* object);
};

Socket connectToKernel()
{
    Socket socket(nl_socket_alloc(), nl_socket_free);
    nl_connect(socket.get(), NETLINK_ROUTE);
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
    traces.push_back({wordsOf(rtnl_addr_get_local(address)),
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
    traces.push_back({words, true, kept(object), removeRoute});
}

template <class Add>
void addAll(int fault, nl_cache* list, Add addOne)
{
    if (fault != 0) {
        qCWarning(lcLumod, "Cannot read what dhcpcd has left: %s", nl_geterror(fault));
        return;
    }
    for (auto* object = nl_cache_get_first(list); object; object = nl_cache_get_next(object))
        addOne(object);
    nl_cache_free(list);
}

/// Routes first, which their address's end would take along.
std::vector<Trace> tracesOn(int index, const Socket& socket)
{
    std::vector<Trace> traces;
    nl_cache* list = nullptr;
    int fault = rtnl_route_alloc_cache(socket.get(), AF_UNSPEC, 0, &list);
    addAll(fault, list, [&](nl_object* object) { addRoute(object, index, traces); });
    fault = rtnl_addr_alloc_cache(socket.get(), &list);
    addAll(fault, list, [&](nl_object* object) { addAddress(object, index, traces); });
    return traces;
}

} // namespace

void EngineTraces::begin(int index)
{
    if (m_index == index)
        return;
    m_index = index;
    m_foreign.clear();
    m_known.clear();
    for (const auto& trace : tracesOn(index, connectToKernel()))
        m_foreign.insert(trace.words);
}

void EngineTraces::remove()
{
    if (m_index == 0)
        return;
    const auto socket = connectToKernel();
    for (const auto& trace : tracesOn(std::exchange(m_index, 0), socket)) {
        if (m_foreign.contains(trace.words) || !(trace.marked || m_known.contains(trace.words)))
            continue;
        const int fault = trace.remove(socket.get(), trace.object.get());
        if (fault == 0)
            qCInfo(lcLumod) << "Took back what dhcpcd has left:" << trace.words;
        else
            qCWarning(lcLumod, "Cannot take %s back: %s", qUtf8Printable(trace.words),
                      nl_geterror(fault));
    }
}
