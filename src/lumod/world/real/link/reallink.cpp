// SPDX-License-Identifier: Apache-2.0
#include "world/real/link/reallink.h"

namespace {

bool isSame(const Lease& a, const Lease& b)
{
    return a.dhcp == b.dhcp && a.ips == b.ips && a.dns == b.dns && a.gateway == b.gateway &&
           a.gateway6 == b.gateway6;
}

} // namespace

RealLink::RealLink(const QString& name, int metric, World& world, Kernel& kernel,
                   NameServers& nameServers, const RealSettings& settings)
    : Link(name, world)
    , m_kernel(kernel)
    , m_nameServers(nameServers)
    , m_settings(settings)
    , m_metric(metric)
    , m_dhcp(name, metric, settings)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &RealLink::giveUp);
    connect(&m_dhcp, &DhcpClient::changed, this, &RealLink::update);
    connect(&m_dhcp, &DhcpClient::failed, &world, &World::failed);
    connect(&m_dhcp, &DhcpClient::abandoned, this, [this] {
        m_kernel.refresh();
        update();
    });
    const auto ended = [this] {
        if (phase() == Phase::Leaving)
            left();
    };
    connect(&m_dhcp, &DhcpClient::stopped, this, ended, Qt::QueuedConnection);
    connect(&m_nameServers, &NameServers::settled, this, &RealLink::update, Qt::QueuedConnection);
}

void RealLink::take(const DhcpEvent& event)
{
    m_kernel.refresh(); // an event may come before the kernel's own
    m_dhcp.take(event);
}

void RealLink::update()
{
    followInterface(std::exchange(m_link, m_kernel.link(name())));
    updateStatus();
    reconcile();
    if (isUp() && !isUsable())
        return goDown(); // which sets out again
    refresh();
}

/// Name servers are written before anybody hears of a new address.
void RealLink::refresh()
{
    const bool usable = m_asking && phase() != Phase::Leaving && isUsable();
    m_nameServers.set(name(), usable
                                  ? NameServers::Uplink{m_metric, m_dhcp.servers(), m_dhcp.domain()}
                                  : NameServers::Uplink());
    if (!usable || !m_nameServers.isSettled())
        return;
    const auto lease = currentLease();
    const bool told = isSame(lease, std::exchange(m_told, lease));
    if (!isUp())
        comeUp();
    else if (!told)
        Q_EMIT world().addressesChanged();
}

void RealLink::ask(bool wanted)
{
    m_asking = wanted && exists();
    if (m_asking)
        m_dhcp.start(m_link.index, m_ip);
    else
        m_dhcp.stop();
}

void RealLink::dropCarrier()
{
    m_silent = false;
    if (isUp() || phase() == Phase::Leaving)
        goDown();
    else
        abort();
}

void RealLink::entered(Phase phase)
{
    if (phase == Phase::Configuring)
        m_deadline.start(m_settings.dhcpDeadline);
    else
        m_deadline.stop();
    if (phase == Phase::Up)
        m_silent = false;
    if (phase == Phase::Leaving)
        m_dhcp.stop();
    if (phase == Phase::Leaving || phase == Phase::Down)
        m_nameServers.set(name(), {});
}

/// dhcpcd goes on asking.
void RealLink::giveUp()
{
    m_silent = true;
    update(); // IPv6 alone counts from now on
    if (isUp())
        return;
    if (m_ip)
        Q_EMIT world().failed(
            QStringLiteral("Cannot use the address %1 on %2").arg(m_ip->address, name()));
    else
        reportNoAnswer();
    abort();
    Q_EMIT settled();
}

bool RealLink::hasIpv4() const
{
    return !m_dhcp.address().isEmpty() && m_link.has(m_dhcp.address());
}

bool RealLink::hasIpv6() const
{
    const auto isGlobal = [](const KernelAddress& address) {
        return address.ipv6 && !address.linkLocal && address.usable;
    };
    return !m_link.route6.gateway.isEmpty() &&
           std::any_of(m_link.addresses.begin(), m_link.addresses.end(), isGlobal);
}

bool RealLink::isUsable() const
{
    return hasCarrier() && (hasIpv4() || ((m_silent || isUp()) && hasIpv6()));
}

Lease RealLink::currentLease() const
{
    Lease lease;
    lease.dhcp = !m_ip;
    for (const auto& address : m_link.addresses)
        if (address.usable)
            lease.ips.append(QStringLiteral("%1/%2%3")
                                 .arg(address.address)
                                 .arg(address.prefix)
                                 .arg(address.linkLocal ? QStringLiteral("l") : QString()));
    for (const auto& server : m_dhcp.servers())
        lease.dns.append(server + (isLinkLocal(server) ? QStringLiteral("l") : QString()));
    lease.gateway = m_link.route.gateway;
    lease.gateway6 = m_link.route6.gateway;
    return lease;
}

void RealLink::describe(InterfaceDetails& details) const
{
    details.mac = m_link.mac;
    details.connected = isUp();
    details.lease = isUp() ? currentLease() : Lease();
}
