#pragma once

#include "world/played/worldfile.h"
#include "world/world.h"

#include <QTimer>

/// What the wired and the wireless link of the played world have in common: the way from down
/// over association and address to up, and back, each step with its delay. Who derives decides when
/// to set out; the announcements are made here, on the world's signals.
class PlayedLink : public QObject
{
    Q_OBJECT

public:
    /// Both references outlive the link.
    PlayedLink(QString name, World& world, const WorldDescription& description);

    [[nodiscard]] bool isUp() const { return m_phase == Phase::Up; }
    /// On its way up.
    [[nodiscard]] bool isConnecting() const;
    [[nodiscard]] InterfaceStatus status() const { return m_status; }
    [[nodiscard]] Lease lease() const { return isUp() ? m_lease : Lease(); }
    /// Tells the status anew.
    void announceStatus();

Q_SIGNALS:
    /// The link has come up, gone down or given up for now.
    void settled();

protected:
    enum class Phase {
        Down,        ///< nothing, or waiting before another try
        Associating, ///< talking to the access point
        Configuring, ///< asking for an address
        Up,          ///< connected
        Leaving,     ///< being taken down
    };

    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] World& world() const { return m_world; }
    [[nodiscard]] const WorldDescription& description() const { return m_description; }
    [[nodiscard]] Phase phase() const { return m_phase; }
    [[nodiscard]] bool isWaiting() const { return m_phase == Phase::Down && m_step.isActive(); }

    /// Sets out where that is wanted and possible; called whenever something has changed.
    virtual void reconcile() = 0;
    /// What the interface is busy with.
    [[nodiscard]] virtual InterfaceStatus currentStatus() const = 0;
    /// The address on the network that has been reached; nothing when nobody gives one.
    [[nodiscard]] virtual std::optional<Lease> askLease() const = 0;
    /// The association's delay is over.
    virtual void associated() {}
    /// The wait before another try is over, or the attempt has got no address.
    virtual void retry() { reconcile(); }
    virtual void leaseRefused() { wait(); }

    void associate() { enter(Phase::Associating, m_description.delays.of("associate")); }
    void configureAddress() { enter(Phase::Configuring, m_description.delays.of("dhcp")); }
    void wait() { enter(Phase::Down, m_description.delays.of("retry")); }
    /// Says so, and takes an orderly leave.
    void leave();
    /// The network is gone: down at once.
    void goDown();
    /// Gives up an attempt or a wait, silently.
    void abort();
    /// Reports that the link is up, again for one that was.
    void announceUp();
    /// Tells the status if it has changed.
    void updateStatus();

private:
    void enter(Phase phase, int delay);
    void step();
    void takeLease();

    QString m_name;
    World& m_world;
    const WorldDescription& m_description;
    QTimer m_step;
    Phase m_phase = Phase::Down;
    InterfaceStatus m_status = InterfaceStatus::Absent;
    Lease m_lease;
};
