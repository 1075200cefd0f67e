#pragma once

#include "world/link.h"
#include "world/real/dhcpclient.h"
#include "world/real/kernel.h"
#include "world/real/nameservers.h"

/// A wired interface of this machine. The kernel's word goes before an engine's: it says whether
/// the interface, the carrier, addresses and gateways are there; dhcpcd only says what is leased.
class RealCable : public Link
{
    Q_OBJECT

public:
    /// The references outlive the link.
    RealCable(World& world, Kernel& kernel, NameServers& nameServers, const RealSettings& settings);

    /// Wants the link up or down, with DHCP or `ip`.
    void configure(bool enabled, const std::optional<StaticIp>& ip);
    /// Looks at the kernel and at dhcpcd; called whenever either has changed.
    void update();
    void take(const DhcpEvent& event);

    [[nodiscard]] bool exists() const { return m_link.index != 0; }
    [[nodiscard]] bool isPlugged() const { return m_link.carrier; }
    [[nodiscard]] InterfaceDetails details() const;

private:
    void reconcile() override;
    [[nodiscard]] InterfaceStatus currentStatus() const override;
    void entered(Phase phase) override;

    void followKernel();
    void giveUp();
    void refresh();
    [[nodiscard]] bool hasIpv4() const;
    [[nodiscard]] bool hasIpv6() const;
    [[nodiscard]] bool isUsable() const;
    [[nodiscard]] Lease currentLease() const;

    Kernel& m_kernel;
    NameServers& m_nameServers;
    const RealSettings& m_settings;
    DhcpClient m_dhcp;
    KernelLink m_link; ///< as last looked at
    bool m_enabled = false;
    std::optional<StaticIp> m_ip;
    QTimer m_deadline;     ///< of a DHCP server's silence
    bool m_silent = false; ///< it is over, and nobody has answered
    Lease m_told;          ///< what was last told of a link that is up
};
