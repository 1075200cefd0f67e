// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QObject>
#include <QQueue>

#include <functional>

/// Starts the calls of the bus's clients in turn, one of each after the other, so that nobody waits
/// for all that somebody else sent. A caller's own calls start in their order.
///
/// Between two turns the event loop gets to whatever has come in. A turn lasts a few milliseconds,
/// so that writes which the disk is to have are stored together, or until a call that leaves its
/// work to the event loop.
class CallerTurns : public QObject
{
    Q_OBJECT
public:
    /// The place where a call's work is done.
    enum class Work {
        AtOnce, ///< While it is started.
        Later   ///< From the event loop: calls that start after it would wait for it unseen.
    };
    using Start = std::function<void()>;

    using QObject::QObject;

    /// Has `start` called from the event loop when it is the turn of `caller`.
    void add(const QString& caller, Work work, const Start& start);

private:
    struct Call
    {
        Work work;
        Start start;
    };
    void schedule();
    void takeTurn();
    /// Takes out the call that is to be started next.
    [[nodiscard]] Call next();

    QHash<QString, QQueue<Call>> m_calls;
    /// The callers that have calls waiting, the next one first.
    QQueue<QString> m_callers;
    /// The callers that have calls waiting and were served in this turn.
    QQueue<QString> m_served;
    bool m_scheduled = false;
};
