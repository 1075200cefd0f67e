// SPDX-License-Identifier: Apache-2.0
#include "bus/bus.h"

#include "interrupt.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QTimer>
#include <QUuid>

namespace ctl {

namespace {

bool hostIsGone(QDBusError::ErrorType type, const QString& name)
{
    return type == QDBusError::ServiceUnknown || type == QDBusError::NoReply ||
           type == QDBusError::Disconnected || type == QDBusError::NoServer ||
           name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

ExitStatus statusOf(const QDBusError& error)
{
    const QString name = error.name();
    if (hostIsGone(error.type(), name))
        return ExitStatus::NotRunning;
    if (error.type() == QDBusError::AccessDenied ||
        name == QLatin1String("org.orva.Error.AccessDenied"))
        return ExitStatus::Refused;
    if (name == QLatin1String("org.orva.Error.UnknownPath"))
        return ExitStatus::NoSuchNode;
    return name.startsWith(QLatin1String("org.orva.")) ? ExitStatus::Failed : ExitStatus::Other;
}

/// The world's interface is missing where the daemon drives real ones.
bool isWithoutWorld(const QDBusError& error)
{
    return (error.type() == QDBusError::UnknownInterface ||
            error.type() == QDBusError::UnknownMethod) &&
           error.message().contains(QLatin1String("org.orva.lumod.World"));
}

/// The text of the error, where the bus's own would not help a person: what to do.
QString textFor(const QDBusError& error)
{
    if (error.type() == QDBusError::AccessDenied)
        return QStringLiteral("The bus does not let this user speak to the host; root and the "
                              "group netdev may.");
    if (error.type() == QDBusError::ServiceUnknown)
        return QStringLiteral("The host is not on the bus; \"systemctl start orva-host\" starts "
                              "it.");
    if (error.type() == QDBusError::NoReply)
        return QStringLiteral("The host has left the bus.");
    if (error.message() == QLatin1String("Networking is not started."))
        return error.message() + QStringLiteral(" \"orvactl network start\" starts it.");
    return error.message().isEmpty() ? error.name() : error.message();
}

/// The exit status for a D-Bus error, and a text that a person understands.
Failure fromBusError(const QDBusError& error)
{
    if (isWithoutWorld(error))
        return Failure{
            ExitStatus::Other,
            QStringLiteral("lumod drives this machine's own interfaces here; these commands "
                           "belong to the world that it plays with --world.")};
    const ExitStatus status = statusOf(error);
    const QString text = textFor(error);
    if (error.type() == QDBusError::LimitsExceeded)
        return Failure{ExitStatus::Busy, text};
    if (error.name() == QLatin1String("org.orva.Error.WrongKind"))
        return Failure{status, text, Reason::wrongKind};
    return Failure{status, text};
}

} // namespace

// The name is the connection's own, since one that failed is never tried again under the same name.
Bus::Bus(const QDeadlineTimer& deadline)
    : m_name(QUuid::createUuid().toString())
    , m_connection(QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_name))
    , m_deadline(deadline)
{
}

Bus::~Bus()
{
    QDBusConnection::disconnectFromBus(m_name);
}

void Bus::tidyUp(std::chrono::seconds atMost)
{
    m_deadline = QDeadlineTimer(atMost);
    m_isTidyingUp = true;
}

Result Bus::check() const
{
    if (m_connection.isConnected())
        return {};
    return Failure{ExitStatus::NotRunning,
                   QStringLiteral("No system bus: %1").arg(m_connection.lastError().message())};
}

bool Bus::runUntil(const std::function<bool()>& done, const QDeadlineTimer& deadline)
{
    QTimer alarm;
    alarm.setTimerType(Qt::PreciseTimer);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        // Set anew each time: a timer may fire a little early.
        if (!deadline.isForever())
            alarm.start(int(deadline.remainingTime()) + 1);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

Result Bus::finish(const QDBusPendingCall& call, std::chrono::seconds atMost) const
{
    const QDeadlineTimer deadline = m_deadline.isForever() ? QDeadlineTimer(atMost) : m_deadline;
    const QDBusPendingCallWatcher watcher(call);
    bool isFinished = false; // in its turn, after the signals that came before the answer
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, [&] { isFinished = true; });
    const auto isInterrupted = [this] { return !m_isTidyingUp && Interrupt::received() != 0; };
    if (!runUntil([&] { return isFinished || isInterrupted(); }, deadline))
        return Failure{ExitStatus::TimedOut, QStringLiteral("No answer in the time given.")};
    if (!isFinished)
        return Failure{ExitStatus::Interrupted, {}};
    if (watcher.isError())
        return fromBusError(watcher.error());
    return {};
}

} // namespace ctl
