// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/world.h"

/// The common part of the wired and the wireless link of each world: the way from down over
/// association and address to up, and back, with the announcements on the world's signals. A
/// derived class decides when to set out and how long each phase takes.
class Link : public QObject
{
    Q_OBJECT

public:
    /// `world` outlives the link.
    Link(QString name, World& world);

    [[nodiscard]] bool isUp() const { return m_phase == Phase::Up; }
    /// On its way up.
    [[nodiscard]] bool isConnecting() const;
    [[nodiscard]] InterfaceStatus status() const { return m_status; }
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
    [[nodiscard]] Phase phase() const { return m_phase; }

    /// Begins to connect where that is wanted and possible; called whenever something has changed.
    virtual void reconcile() = 0;
    /// The phase that the interface is in.
    [[nodiscard]] virtual InterfaceStatus currentStatus() const = 0;
    /// The same for one that is on its way up or down, or is neither.
    [[nodiscard]] InterfaceStatus statusOfPhase() const;
    /// The phase has been entered and is not announced yet: starts the work that it needs, and ends
    /// all other.
    virtual void entered(Phase phase) = 0;

    void enter(Phase phase);
    /// Connected, and says so.
    void comeUp();
    /// Says so, and takes an orderly leave, which ends in `goDown`.
    void leave();
    /// The network is gone: down at once.
    void goDown();
    /// Gives up an attempt or a wait, silently.
    void abort() { enter(Phase::Down); }
    /// Reports that the link is up, again for one that was.
    void announceUp();
    /// Reports that nobody has given an address.
    void reportNoAnswer();
    /// Tells the status if it has changed.
    void updateStatus();

private:
    QString m_name;
    World& m_world;
    Phase m_phase = Phase::Down;
    InterfaceStatus m_status = InterfaceStatus::Absent;
};
