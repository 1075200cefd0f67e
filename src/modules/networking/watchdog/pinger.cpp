// SPDX-License-Identifier: Apache-2.0
#include "watchdog/pinger.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "network/networkrules.h"

namespace {

constexpr int pingTimeoutMs = 5000;

ORVA_LOGGER(pingerLogger, "Pinger")

void logResult(const OrvaProcessHandlerResult& result)
{
    const bool ok = result.finishedOk();
    if (ok)
        LOG4CPLUS_DEBUG(pingerLogger(), "gateway ping ok");
    else
        LOG4CPLUS_WARN(pingerLogger(), "gateway ping failed: " << result);
    const QStringList lines = result.getData().split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (ok)
            LOG4CPLUS_DEBUG(pingerLogger(), "ping: " << line);
        else
            LOG4CPLUS_WARN(pingerLogger(), "ping: " << line);
    }
}

} // namespace

Pinger::Pinger(QObject* parent, int intervalMs)
    : QObject(parent)
    , m_info(new CMValueItem(this, OrvaNetworkInfoPath()))
    , m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &Pinger::on_timer_timeout);
    m_timer.start(intervalMs);
}

void Pinger::on_timer_timeout()
{
    if (m_process.isRunning()) {
        LOG4CPLUS_WARN(pingerLogger(),
                       "Ping process was still running from the last check, should be "
                       "impossible, killing process!");
        m_process.kill();
    }
    const OrvaNetworkInfo info = m_info->value().networkInfo();
    if (info.wireless().state() != OrvaNetworkState::Connected) {
        LOG4CPLUS_DEBUG(pingerLogger(), "wifi not connected, no need to send a ping");
        return;
    }
    const QString gateway = orvaNetworkInfoToGateway4(info);
    // Other text, from the daemon, would reach the program as an option or as a name to look up.
    if (orvaIPv4Address(gateway).isEmpty()) {
        LOG4CPLUS_DEBUG(pingerLogger(), "No gateway available, not sending ping");
        return;
    }
    ping(gateway);
}

void Pinger::ping(const QString& gateway)
{
    const QStringList arguments{QStringLiteral("-c"), QStringLiteral("1"), QStringLiteral("-W"),
                                QStringLiteral("3"), gateway};
    m_process.startAsync(QStringLiteral("/bin/ping"), arguments, pingTimeoutMs,
                         [this](const OrvaProcessHandlerResult& result) {
                             logResult(result);
                             using End = OrvaProcessHandlerResult::End;
                             // One that was not asked tells nothing of the gateway.
                             if (result.end() == End::Exited)
                                 Q_EMIT pinged(result.finishedOk());
                         });
    LOG4CPLUS_DEBUG(pingerLogger(), "ping process started");
}
