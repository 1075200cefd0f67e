// SPDX-License-Identifier: Apache-2.0
#include "buswatchdog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <limits>

namespace {

constexpr int maxPause = 5000;     // ms
constexpr int maxPatience = 30000; // ms

QString connectionName()
{
    return QStringLiteral("watchdog");
}

/// Half of the time in which the service manager wants to hear from the host, in ms; 0 where it
/// does not.
int managerInterval()
{
    uint64_t limit = 0;
    if (sd_watchdog_enabled(0, &limit) <= 0)
        return 0;
    return int(std::min<uint64_t>(limit / 2000, std::numeric_limits<int>::max()));
}

} // namespace

BusWatchdog::BusWatchdog(const QString& service)
    : m_service(service)
    , m_connection(QDBusConnection::connectToBus(QDBusConnection::SystemBus, connectionName()))
    , m_interval(managerInterval())
    , m_patience(m_interval > 0 ? std::min(m_interval / 2, maxPatience) : maxPatience)
{
    for (QTimer* timer : {&m_next, &m_limit}) {
        timer->setSingleShot(true); // Coarse, as every timer of this length.
    }
    connect(&m_next, &QTimer::timeout, this, &BusWatchdog::ask);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        // The answer may have come while this thread was busy.
        if (m_ping && m_ping->isFinished() && !m_ping->isError())
            judge(true);
        else
            Q_EMIT deaf();
    });
}

BusWatchdog::~BusWatchdog()
{
    // The thread of the connection frees a ping that is open at the end, whoever still has it.
    m_ping.reset();
    qDeleteAll(findChildren<QDBusPendingCallWatcher*>());
    QDBusConnection::disconnectFromBus(connectionName());
}

void BusWatchdog::start()
{
    if (m_interval > 0)
        ask();
}

void BusWatchdog::note()
{
    const int pause = std::min(m_patience, maxPause);
    const bool soon = m_next.isActive() && m_next.remainingTime() <= pause;
    if (!m_ping && !soon)
        m_next.start(pause);
}

void BusWatchdog::ask()
{
    // Answered by the thread that reads, even while this one is busy.
    m_ping = m_connection.asyncCall(QDBusMessage::createMethodCall(
        m_service, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"),
        QStringLiteral("Ping")));
    auto* answer = new QDBusPendingCallWatcher(*m_ping, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        judge(!answer->isError());
    });
    if (!m_limit.isActive())
        m_limit.start(m_patience);
}

void BusWatchdog::judge(bool answered)
{
    m_ping.reset();
    if (!answered) {
        // The bus refuses for a moment what goes to a crowded host.
        m_next.start(std::min(m_patience / 4, maxPause));
        return;
    }
    m_limit.stop();
    sd_notify(0, "WATCHDOG=1");
    m_next.stop();
    if (m_interval > 0)
        m_next.start(m_interval);
}
