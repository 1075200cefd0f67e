// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/lumo/restartbackoff.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QDBusPendingCallWatcher;

/// Questions to a service on the bus that wait for their answer, but never long.
///
/// A service that owns its name need not answer, and waiting for it holds the event loop. So a
/// question waits 2 s. While one is unanswered, further ones are not
/// sent; they fail at once, until its answer has come or it is given up, 30 s after it was sent.
/// The first question of all has the bus start the service, for as long as the bus takes for that
/// (30 s at most).
///
/// Belongs to the thread of the event loop.
class BoundedCalls : public QObject
{
    Q_OBJECT
public:
    /// Sends a question, with a time-out of its own that is longer than any hang.
    using Send = std::function<QDBusPendingCall()>;

    /// `service` is on `bus`.
    BoundedCalls(const QDBusConnection& bus, const QString& service, QObject* parent);

    /// The service's answer, which may be an error; or an error that says that there was none.
    /// `isAnswer` tells the two apart.
    [[nodiscard]] QDBusMessage ask(const Send& send);

    /// True when the reply comes from the service, be it a refusal; false when the bus or this
    /// process made it.
    [[nodiscard]] static bool isAnswer(const QDBusMessage& reply);

    /// The service has left the bus: the questions that it did not answer are given up.
    void forgetUnanswered();

Q_SIGNALS:
    /// Questions that a default answered may be asked anew: the service answers again after some
    /// had failed, or one was given up. Comes from the event loop. Where answers keep coming too
    /// late, a growing pause goes before it: a service that is merely slow would otherwise hold the
    /// event loop for most of the time.
    void askAgain();

private:
    void startService();
    [[nodiscard]] QDBusMessage wait(const QDBusPendingCall& call, int limit);
    [[nodiscard]] QDBusMessage miss(const QDBusMessage& reply);
    void on_lateReply(QDBusPendingCallWatcher* late);
    void on_giveUpTimer_timeout();
    void noteAnswer(int pauseMs);
    /// Lets what a default answered be asked anew, once.
    void scheduleAskAgain(int pauseMs);

    const QDBusConnection m_bus;
    const QString m_service;
    bool m_started = false;
    bool m_silent = false; ///< The service does not answer, which has been logged.
    bool m_missed = false; ///< A default answered, and `askAgain` is still to come.
    /// The question that others wait for. Those given up are watched on: their answers, too, say
    /// that the service lives.
    QPointer<QDBusPendingCallWatcher> m_unanswered;
    QTimer m_giveUpTimer; ///< Runs while a question is unanswered.
    QElapsedTimer m_clock;
    RestartBackoff m_lateBackoff;
};
