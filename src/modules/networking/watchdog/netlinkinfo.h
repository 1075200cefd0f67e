// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

class QString;
struct nl_sock;
struct rtnl_link;

/// A snapshot of one network interface: its packet counters and flags at the time of the lookup.
///
/// Holds one libnl reference on the link, or none. Copies share the link. Every reading requires a
/// valid interface; on an invalid one it ends the process, in every kind of build.
class NetLinkInterface
{
public:
    /// Adopts the reference that the caller holds on `link`; null makes an invalid interface.
    explicit NetLinkInterface(rtnl_link* link = nullptr);
    NetLinkInterface(const NetLinkInterface& other);
    NetLinkInterface(NetLinkInterface&& other) noexcept;
    ~NetLinkInterface();

    NetLinkInterface& operator=(const NetLinkInterface& other);
    NetLinkInterface& operator=(NetLinkInterface&& other) noexcept;

    /// True where the lookup found an interface.
    [[nodiscard]] bool isValid() const { return m_link != nullptr; }

    /// Packets and bytes received and sent since the interface was created.
    [[nodiscard]] quint64 getRxPackets() const;
    [[nodiscard]] quint64 getTxPackets() const;
    [[nodiscard]] quint64 getRxBytes() const;
    [[nodiscard]] quint64 getTxBytes() const;

    /// True while the driver signals a carrier (`IFF_LOWER_UP`).
    [[nodiscard]] bool isLowerUp() const;

private:
    [[nodiscard]] rtnl_link* link() const;

    rtnl_link* m_link;
};

/// Looks network interfaces up in the kernel by route netlink.
///
/// Owns one netlink socket. When the socket cannot be connected this is logged once at fatal level
/// and every lookup fails. Not thread-safe.
class NetLinkInfo
{
public:
    NetLinkInfo();
    ~NetLinkInfo();

    /// Asks the kernel for the interface `name`: one round trip, which does not wait for anything
    /// but the kernel. A failure is logged and gives an invalid interface.
    [[nodiscard]] NetLinkInterface getInterface(const QString& name);

private:
    Q_DISABLE_COPY(NetLinkInfo)

    nl_sock* m_socket;
};
