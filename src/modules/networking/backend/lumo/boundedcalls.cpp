// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/boundedcalls.h"

#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumolog.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QThread>

#include <utility>

namespace {

constexpr int answerLimit = 2000;  // ms
constexpr int startLimit = 30000;  // ms
constexpr int giveUpLimit = 30000; // ms

/// A pending call has no bounded wait of its own; its reply is taken in by another thread.
bool waitForFinished(const QDBusPendingCall& call, int limit)
{
    constexpr unsigned long longestNap = 2000; // µs
    const QDeadlineTimer deadline(limit, Qt::PreciseTimer);
    unsigned long nap = 20; // µs
    while (!call.isFinished() && !deadline.hasExpired()) {
        QThread::usleep(nap);
        nap = qMin(2 * nap, longestNap);
    }
    return call.isFinished();
}

QDBusMessage noReply()
{
    return QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("No answer in time"));
}
} // namespace

BoundedCalls::BoundedCalls(const QDBusConnection& bus, const QString& service, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_service(service)
{
    m_clock.start();
    m_giveUpTimer.setParent(this);
    m_giveUpTimer.setSingleShot(true);
    connect(&m_giveUpTimer, &QTimer::timeout, this, &BoundedCalls::on_giveUpTimer_timeout);
}

QDBusMessage BoundedCalls::ask(const Send& send)
{
    if (!m_started)
        startService();
    if (m_unanswered)
        return miss(noReply());
    const QDBusMessage reply = wait(send(), answerLimit);
    if (!isAnswer(reply))
        return miss(reply);
    noteAnswer(0);
    return reply;
}

void BoundedCalls::startService()
{
    m_started = true;
    auto start = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("StartServiceByName"));
    start << m_service << 0U;
    const QDBusMessage reply = wait(m_bus.asyncCall(start, startLimit), startLimit);
    // A service that cannot be started may run all the same.
    if (reply.type() == QDBusMessage::ErrorMessage &&
        QDBusError(reply).type() != QDBusError::ServiceUnknown)
        LOG4CPLUS_WARN(lumoLogger(),
                       m_service << " does not start: " << lumoText(reply.errorMessage()));
}

QDBusMessage BoundedCalls::wait(const QDBusPendingCall& call, int limit)
{
    if (waitForFinished(call, limit))
        return call.reply();
    m_unanswered = new QDBusPendingCallWatcher(call, this);
    connect(m_unanswered, &QDBusPendingCallWatcher::finished, this, &BoundedCalls::on_lateReply);
    m_giveUpTimer.start(giveUpLimit - limit);
    return noReply();
}

bool BoundedCalls::isAnswer(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return true;
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::ServiceUnknown:
    case QDBusError::NoServer:
    case QDBusError::Disconnected:
    case QDBusError::LimitsExceeded:
    case QDBusError::AccessDenied:
        return false;
    default:
        return reply.errorName() != QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") &&
               !reply.errorName().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
    }
}

QDBusMessage BoundedCalls::miss(const QDBusMessage& reply)
{
    if (!m_silent)
        LOG4CPLUS_WARN(lumoLogger(), m_service << " does not answer, using defaults until it does: "
                                               << reply.errorName() << ", "
                                               << lumoText(reply.errorMessage()));
    m_silent = true;
    m_missed = true;
    return reply;
}

void BoundedCalls::forgetUnanswered()
{
    m_giveUpTimer.stop();
    qDeleteAll(findChildren<QDBusPendingCallWatcher*>());
}

void BoundedCalls::on_lateReply(QDBusPendingCallWatcher* late)
{
    const QDBusMessage reply = late->reply();
    late->deleteLater();
    if (late == m_unanswered) {
        m_unanswered.clear();
        m_giveUpTimer.stop();
    }
    if (isAnswer(reply))
        noteAnswer(m_lateBackoff.afterLoss(m_clock.elapsed()));
    else
        LOG4CPLUS_WARN(lumoLogger(), "Late request to " << m_service
                                                        << " failed: " << reply.errorName() << ", "
                                                        << lumoText(reply.errorMessage()));
}

void BoundedCalls::on_giveUpTimer_timeout()
{
    LOG4CPLUS_DEBUG(lumoLogger(), m_service << " has not answered for 30 s, asking again");
    m_unanswered.clear();
    scheduleAskAgain(m_lateBackoff.afterLoss(m_clock.elapsed()));
}

void BoundedCalls::noteAnswer(int pauseMs)
{
    if (std::exchange(m_silent, false))
        LOG4CPLUS_INFO(lumoLogger(), m_service << " answers again");
    scheduleAskAgain(pauseMs);
}

void BoundedCalls::scheduleAskAgain(int pauseMs)
{
    if (std::exchange(m_missed, false))
        QTimer::singleShot(pauseMs, this, &BoundedCalls::askAgain);
}
