// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/enginetraces.h"

#include "log.h"
#include "world/real/kernel/routesocket.h"

#include <algorithm>
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
#include <vector>

namespace {

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

/// Which may have been read before.
void add(Trace trace, std::vector<Trace>& traces)
{
    const auto isSame = [&trace](const Trace& one) {
        return nl_object_identical(one.object.get(), trace.object.get()) != 0;
    };
    if (std::none_of(traces.begin(), traces.end(), isSame))
        traces.push_back(std::move(trace));
}

void addAddress(nl_object* object, int index, std::vector<Trace>& traces)
{
    auto* address = reinterpret_cast<rtnl_addr*>(object);
    if (rtnl_addr_get_ifindex(address) != index || rtnl_addr_get_scope(address) == RT_SCOPE_LINK)
        return;
    add({wordsOf(rtnl_addr_get_local(address)), rtnl_addr_get_family(address),
         (rtnl_addr_get_flags(address) & IFA_F_NOPREFIXROUTE) != 0, kept(object), removeAddress},
        traces);
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
    add({words, rtnl_route_get_family(route), true, kept(object), removeRoute}, traces);
}

/// A list that changes again and again is complete enough with what some readings have shown.
template <class Add>
bool readAll(const RouteSocket& socket, int type, Add add)
{
    constexpr int readings = 3;
    int fault = -NLE_DUMP_INTR;
    for (int i = 0; i < readings && fault == -NLE_DUMP_INTR; ++i)
        fault = readList(socket, type, add);
    if (fault >= 0 || fault == -NLE_DUMP_INTR)
        return true;
    qCWarning(lcLumod, "Cannot read what dhcpcd has left: %s", nl_geterror(fault));
    return false;
}

/// Routes first, which their address's end would take along. Nothing where they cannot be read.
std::optional<std::vector<Trace>> tracesOn(int index, const RouteSocket& socket)
{
    std::vector<Trace> traces;
    if (readAll(socket, RTM_GETROUTE, [&](nl_object* one) { addRoute(one, index, traces); }) &&
        readAll(socket, RTM_GETADDR, [&](nl_object* one) { addAddress(one, index, traces); }))
        return traces;
    return {};
}

void removeOne(const RouteSocket& socket, const Trace& trace)
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
    const auto traces = tracesOn(index, openRouteSocket());
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
    const auto socket = openRouteSocket();
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
