// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/playedlink.h"

/// The wired interface, its cable and the network behind it.
class PlayedCable : public PlayedLink
{
    Q_OBJECT

public:
    using PlayedLink::PlayedLink;

    /// Wants the link up or down, with DHCP or `ip`.
    void configure(bool enabled, const std::optional<StaticIp>& ip);
    /// The description's `plugged` has changed.
    void cableChanged();
    [[nodiscard]] InterfaceDetails details() const;

private:
    void reconcile() override;
    [[nodiscard]] InterfaceStatus currentStatus() const override;
    [[nodiscard]] std::optional<Lease> askLease() const override;

    bool m_enabled = false;
    std::optional<StaticIp> m_ip;
};
