// SPDX-License-Identifier: Apache-2.0
#include "watchdog/netlinkinfo.h"

#include "core/dbglog.h"

#include <QString>

#include <cerrno>
#include <cstring>
#include <utility>

#include <linux/if.h>
#include <netlink/netlink.h>
#include <netlink/route/link.h>

namespace {

ORVA_LOGGER(netLinkLogger, "NetLinkInfo")

rtnl_link* share(rtnl_link* link)
{
    if (link != nullptr)
        nl_object_get(OBJ_CAST(link));
    return link;
}

} // namespace

NetLinkInterface::NetLinkInterface(rtnl_link* link)
    : m_link(link)
{
}

NetLinkInterface::NetLinkInterface(const NetLinkInterface& other)
    : m_link(share(other.m_link))
{
}

NetLinkInterface::NetLinkInterface(NetLinkInterface&& other) noexcept
    : m_link(std::exchange(other.m_link, nullptr))
{
}

NetLinkInterface::~NetLinkInterface()
{
    if (m_link != nullptr)
        rtnl_link_put(m_link);
}

NetLinkInterface& NetLinkInterface::operator=(const NetLinkInterface& other)
{
    NetLinkInterface copy(other);
    std::swap(m_link, copy.m_link);
    return *this;
}

NetLinkInterface& NetLinkInterface::operator=(NetLinkInterface&& other) noexcept
{
    NetLinkInterface taken(std::move(other));
    std::swap(m_link, taken.m_link);
    return *this;
}

rtnl_link* NetLinkInterface::link() const
{
    // Not Q_ASSERT, which a release build leaves out.
    if (!isValid())
        qt_assert("isValid()", __FILE__, __LINE__);
    return m_link;
}

quint64 NetLinkInterface::getRxPackets() const
{
    return rtnl_link_get_stat(link(), RTNL_LINK_RX_PACKETS);
}

quint64 NetLinkInterface::getTxPackets() const
{
    return rtnl_link_get_stat(link(), RTNL_LINK_TX_PACKETS);
}

quint64 NetLinkInterface::getRxBytes() const
{
    return rtnl_link_get_stat(link(), RTNL_LINK_RX_BYTES);
}

quint64 NetLinkInterface::getTxBytes() const
{
    return rtnl_link_get_stat(link(), RTNL_LINK_TX_BYTES);
}

bool NetLinkInterface::isLowerUp() const
{
    return (rtnl_link_get_flags(link()) & IFF_LOWER_UP) != 0;
}

NetLinkInfo::NetLinkInfo()
    : m_socket(nl_socket_alloc())
{
    Q_CHECK_PTR(m_socket);
    if (nl_connect(m_socket, NETLINK_ROUTE) < 0) {
        LOG4CPLUS_FATAL(netLinkLogger(),
                        "Couldn't connect netlink socket: " << std::strerror(errno));
    }
}

NetLinkInfo::~NetLinkInfo()
{
    nl_socket_free(m_socket);
}

NetLinkInterface NetLinkInfo::getInterface(const QString& name)
{
    rtnl_link* link = nullptr;
    if (rtnl_link_get_kernel(m_socket, 0, name.toUtf8().constData(), &link) < 0) {
        LOG4CPLUS_ERROR(netLinkLogger(), "Couldn't get details for interface "
                                             << name << " from kernel: " << std::strerror(errno));
        return NetLinkInterface();
    }
    Q_ASSERT(link);
    return NetLinkInterface(link);
}
