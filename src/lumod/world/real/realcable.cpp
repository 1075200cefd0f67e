#include "world/real/realcable.h"

#include "log.h"

namespace {

bool isSame(const Lease& a, const Lease& b)
{
    return a.dhcp == b.dhcp && a.ips == b.ips && a.dns == b.dns && a.gateway == b.gateway &&
           a.gateway6 == b.gateway6;
}

} // namespace

RealCable::RealCable(World& world, Kernel& kernel, NameServers& nameServers,
                     const RealSettings& settings)
    : Link(settings.wired, world)
    , m_kernel(kernel)
    , m_nameServers(nameServers)
    , m_settings(settings)
    , m_dhcp(settings.wired, settings.wiredMetric, settings)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &RealCable::giveUp);
    connect(&m_dhcp, &DhcpClient::changed, this, &RealCable::update);
    connect(&m_dhcp, &DhcpClient::failed, &world, &World::failed);
    connect(&m_dhcp, &DhcpClient::abandoned, this, [this] {
        m_kernel.clearAddresses(m_link.index);
        update();
    });
    const auto left = [this] {
        if (phase() == Phase::Leaving)
            goDown();
    };
    connect(&m_dhcp, &DhcpClient::stopped, this, left, Qt::QueuedConnection);
    connect(&m_nameServers, &NameServers::settled, this, &RealCable::update, Qt::QueuedConnection);
}

void RealCable::configure(bool enabled, const std::optional<StaticIp>& ip)
{
    const bool same = m_enabled == enabled && m_ip == ip;
    m_enabled = enabled;
    m_ip = ip;
    if (enabled && exists() && !m_link.up)
        m_kernel.setUp(m_link.index);
    if (isUp() && same)
        return announceUp();
    if (isUp())
        return leave();
    m_silent = false;
    if (phase() != Phase::Leaving && !same)
        abort();
    reconcile();
}

void RealCable::take(const DhcpEvent& event)
{
    m_kernel.refresh(); // an event may come before the kernel's own
    m_dhcp.take(event);
}

void RealCable::followKernel()
{
    const auto before = std::exchange(m_link, m_kernel.link(name()));
    if (m_link.index != 0 && m_link.index != before.index && !m_link.up)
        m_kernel.setUp(m_link.index);
    // An interface that was replaced meanwhile had its carrier lost.
    const bool lost = before.carrier && (!m_link.carrier || m_link.index != before.index);
    if (before.carrier != m_link.carrier)
        Q_EMIT world().cableChanged(m_link.carrier);
    if (lost) {
        m_silent = false;
        isUp() || phase() == Phase::Leaving ? goDown() : abort();
    }
    updateStatus();
}

void RealCable::update()
{
    followKernel();
    reconcile();
    if (isUp() && !isUsable())
        return goDown(); // which sets out again
    refresh();
}

/// Name servers are written before anybody hears of a new address.
void RealCable::refresh()
{
    const bool usable = m_enabled && phase() != Phase::Leaving && isUsable();
    m_nameServers.set(name(), usable ? NameServers::Uplink{m_settings.wiredMetric, m_dhcp.servers(),
                                                           m_dhcp.domain()}
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

void RealCable::reconcile()
{
    if (phase() == Phase::Leaving)
        return;
    if (m_enabled && exists())
        m_dhcp.start(m_link.index, m_ip);
    else
        m_dhcp.stop();
    if (phase() == Phase::Down && m_enabled && m_link.carrier && !m_silent)
        enter(Phase::Configuring);
}

void RealCable::entered(Phase phase)
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
void RealCable::giveUp()
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

bool RealCable::hasIpv4() const
{
    return !m_dhcp.address().isEmpty() && m_link.has(m_dhcp.address());
}

bool RealCable::hasIpv6() const
{
    const auto isGlobal = [](const KernelAddress& address) {
        return address.ipv6 && !address.linkLocal && address.usable;
    };
    return !m_link.route6.gateway.isEmpty() &&
           std::any_of(m_link.addresses.begin(), m_link.addresses.end(), isGlobal);
}

bool RealCable::isUsable() const
{
    return m_link.carrier && (hasIpv4() || ((m_silent || isUp()) && hasIpv6()));
}

InterfaceStatus RealCable::currentStatus() const
{
    if (!exists())
        return InterfaceStatus::Absent;
    if (!m_link.carrier)
        return InterfaceStatus::NoCarrier;
    return isConnecting() ? InterfaceStatus::Connecting : InterfaceStatus::Idle;
}

Lease RealCable::currentLease() const
{
    Lease lease;
    lease.dhcp = !m_ip;
    for (const auto& address : m_link.addresses)
        if (address.usable)
            lease.ips.append(QStringLiteral("%1/%2%3")
                                 .arg(address.address)
                                 .arg(address.prefix)
                                 .arg(address.linkLocal ? QStringLiteral("l") : QString()));
    lease.dns = m_dhcp.servers();
    lease.gateway = m_link.route.gateway;
    lease.gateway6 = m_link.route6.gateway;
    return lease;
}

InterfaceDetails RealCable::details() const
{
    InterfaceDetails details;
    if (!exists())
        return details;
    details.kind = InterfaceDetails::Kind::Wired;
    details.mac = m_link.mac;
    details.connected = isUp();
    details.lease = isUp() ? currentLease() : Lease();
    details.cable = m_link.carrier;
    return details;
}
