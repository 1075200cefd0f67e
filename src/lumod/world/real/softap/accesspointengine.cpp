// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/accesspointengine.h"

#include "world/real/engines/savetext.h"
#include "world/real/engines/strayprocesses.h"
#include "world/real/softap/softapconfiguration.h"

#include <QFile>

namespace {

constexpr int askMilliseconds = 100;
constexpr int mostAsked = 300; // a country's rules take their time
constexpr int stuckMilliseconds = 10000;

} // namespace

AccessPointEngine::AccessPointEngine(QString interface, const RealSettings& settings)
    : m_interface(std::move(interface))
    , m_settings(settings)
    , m_configuration(
          QStringLiteral("%1/hostapd-%2.conf").arg(settings.runtimeDirectory, m_interface))
    , m_child(settings.helperDirectory + QStringLiteral("/lumod-keep"), QStringLiteral("hostapd"))
{
    m_child.keepLastThat(tellsWhy);
    m_ask.setInterval(askMilliseconds);
    connect(&m_ask, &QTimer::timeout, this, &AccessPointEngine::ask);
    connect(&m_socket, &DatagramSocket::received, this, &AccessPointEngine::take);
    connect(&m_child, &ChildProcess::failed, this, [this](const QString& words, int pause) {
        // The last words of one that was up were about a station.
        const auto why = m_ask.isActive() ? words : QStringLiteral("hostapd has ended");
        clearUp();
        Q_EMIT failed(why, pause);
    });
    connect(&m_child, &ChildProcess::stopped, this, [this] {
        clearUp();
        if (std::exchange(m_stuck, false))
            Q_EMIT failed(QStringLiteral("it does not come up"), stuckMilliseconds);
        else
            Q_EMIT stopped();
    });
}

AccessPointEngine::~AccessPointEngine()
{
    end();
}

void AccessPointEngine::end()
{
    blockSignals(true); // its owner is going
    m_child.end();
    clearUp();
}

void AccessPointEngine::start(const QByteArray& configuration)
{
    auto ready = m_socket.open(
        QStringLiteral("%1/stations-%2").arg(m_settings.runtimeDirectory, m_interface));
    if (ready)
        ready = saveSecret(m_configuration, configuration);
    if (!ready) {
        clearUp();
        return Q_EMIT failed(ready.why(), stuckMilliseconds);
    }
    killProcesses(QStringLiteral("hostapd"), m_configuration);
    m_attached = false;
    m_asked = 0;
    m_child.start(m_settings.hostapd, {m_configuration});
    m_ask.start();
}

void AccessPointEngine::stop()
{
    m_ask.stop();
    m_stuck = false;
    m_child.stop();
}

void AccessPointEngine::ask()
{
    const auto speaker =
        hostapdDirectory(m_settings.runtimeDirectory) + QLatin1Char('/') + m_interface;
    // What was told before it knew of us is in the answer to STATUS.
    const bool sent = m_socket.send(m_attached ? "STATUS" : "ATTACH", speaker);
    m_attached = m_attached || sent;
    if (++m_asked < mostAsked)
        return;
    m_ask.stop();
    m_stuck = true;
    m_child.stop();
}

void AccessPointEngine::take(const QByteArray& datagram)
{
    const auto event = parseAccessPointEvent(datagram);
    if (!event || m_child.isEnding())
        return;
    switch (event->kind) {
    case AccessPointEvent::Kind::Enabled:
        if (m_ask.isActive() && m_attached && event->channel != 0) {
            m_ask.stop();
            Q_EMIT enabled(event->channel);
        }
        break;
    case AccessPointEvent::Kind::Listening:
        m_asked = 0;
        break;
    case AccessPointEvent::Kind::Moved:
        Q_EMIT moved(event->channel);
        break;
    case AccessPointEvent::Kind::Disabled:
        if (!m_ask.isActive()) // before it was enabled, its end tells why
            Q_EMIT disabled();
        break;
    case AccessPointEvent::Kind::Joined:
        Q_EMIT stationJoined(event->station);
        break;
    case AccessPointEvent::Kind::Left:
        Q_EMIT stationLeft(event->station);
        break;
    }
}

/// Nothing of it is left, the pass phrase in its configuration least of all.
void AccessPointEngine::clearUp()
{
    m_ask.stop();
    m_socket.close();
    killProcesses(QStringLiteral("hostapd"), m_configuration);
    QFile::remove(m_configuration);
}
