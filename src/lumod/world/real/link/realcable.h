// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/link/reallink.h"

/// A wired interface of this machine; its carrier is the cable.
class RealCable : public RealLink
{
    Q_OBJECT

public:
    /// The references outlive the link.
    RealCable(World& world, Kernel& kernel, NameServers& nameServers, const RealSettings& settings);

    /// Wants the link up or down, with DHCP or `ip`.
    void configure(bool enabled, const std::optional<StaticIp>& ip);

    [[nodiscard]] bool isPlugged() const { return link().carrier; }
    [[nodiscard]] InterfaceDetails details() const;

private:
    void reconcile() override;
    [[nodiscard]] InterfaceStatus currentStatus() const override;
    [[nodiscard]] bool hasCarrier() const override { return link().carrier; }
    void followInterface(const KernelLink& before) override;

    bool m_enabled = false;
};
