// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/link.h"
#include "world/played/worldfile.h"

#include <QTimer>

/// A link each of whose steps takes the delay that the description gives it.
class PlayedLink : public Link
{
    Q_OBJECT

public:
    /// Both references outlive the link.
    PlayedLink(QString name, World& world, const WorldDescription& description);

    [[nodiscard]] Lease lease() const { return isUp() ? m_lease : Lease(); }

protected:
    [[nodiscard]] const WorldDescription& description() const { return m_description; }
    [[nodiscard]] bool isWaiting() const { return phase() == Phase::Down && m_step.isActive(); }

    /// The address on the network that has been reached; nothing when nobody gives one.
    [[nodiscard]] virtual std::optional<Lease> askLease() const = 0;
    /// The association's delay is over.
    virtual void associated() {}
    /// The wait before another try is over, or the attempt has got no address.
    virtual void retry() { reconcile(); }
    virtual void leaseRefused() { wait(); }
    /// Down until the delay before another try is over.
    void wait();

private:
    void entered(Phase phase) override;
    void step();
    void takeLease();

    const WorldDescription& m_description;
    QTimer m_step;
    Lease m_lease;
};
