// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/link.h"
#include "world/real/kernel/kernel.h"
#include "world/real/link/dhcpclient.h"
#include "world/real/link/nameservers.h"

/// The common part of the real cable and the real radio: once there is a carrier, dhcpcd asks for
/// an address, and with one the link is up. The kernel's word goes before an engine's: it tells of
/// the interface, addresses and gateways; dhcpcd only tells of the lease.
class RealLink : public Link
{
    Q_OBJECT

public:
    /// Looks at the kernel and at dhcpcd; called whenever either has changed.
    void update();
    void take(const DhcpEvent& event);

    [[nodiscard]] bool exists() const { return m_link.index != 0; }

protected:
    /// The references outlive the link; `metric` is that of its routes.
    RealLink(const QString& name, int metric, World& world, Kernel& kernel,
             NameServers& nameServers, const RealSettings& settings);

    /// An address can be asked for.
    [[nodiscard]] virtual bool hasCarrier() const = 0;
    /// The interface is other than before.
    virtual void followInterface(const KernelLink& before) = 0;
    /// dhcpcd has ended in the course of an orderly leave.
    virtual void left() { goDown(); }

    [[nodiscard]] const RealSettings& settings() const { return m_settings; }
    [[nodiscard]] Kernel& kernel() const { return m_kernel; }
    [[nodiscard]] const KernelLink& link() const { return m_link; }
    [[nodiscard]] const std::optional<StaticIp>& ip() const { return m_ip; }
    void setIp(const std::optional<StaticIp>& ip) { m_ip = ip; }
    /// Wants an address, or none.
    void ask(bool wanted);
    /// The carrier is lost: down at once, and what was waited for in vain may be tried anew.
    void dropCarrier();
    /// Nobody gives an address, and the deadline for it is over.
    [[nodiscard]] bool isSilent() const { return m_silent; }
    void forgetSilence() { m_silent = false; }
    /// Fills in the link's part of the details: `mac`, `connected` and `lease`.
    void describe(InterfaceDetails& details) const;

    void entered(Phase phase) override;

private:
    void giveUp();
    void refresh();
    [[nodiscard]] bool hasIpv4() const;
    [[nodiscard]] bool hasIpv6() const;
    [[nodiscard]] bool isUsable() const;
    [[nodiscard]] Lease currentLease() const;

    Kernel& m_kernel;
    NameServers& m_nameServers;
    const RealSettings& m_settings;
    int m_metric;
    DhcpClient m_dhcp;
    KernelLink m_link; ///< as last looked at
    std::optional<StaticIp> m_ip;
    bool m_asking = false;
    QTimer m_deadline;     ///< of a DHCP server's silence
    bool m_silent = false; ///< it is over, and nobody has answered
    Lease m_told;          ///< what was last told of a link that is up
};
