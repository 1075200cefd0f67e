// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedwps.h"

PlayedWps::PlayedWps(World& world, const WorldDescription& description)
    : m_world(world)
    , m_description(description)
{
    m_walk.setSingleShot(true);
    m_exchange.setSingleShot(true);
    connect(&m_walk, &QTimer::timeout, this, [this] { fail(QStringLiteral("WPS timed out")); });
    connect(&m_exchange, &QTimer::timeout, this, &PlayedWps::finish);
}

void PlayedWps::start(const QString& pin)
{
    end();
    m_running = true;
    m_pin = pin;
    if (const int walk = m_description.delays.of("wpsWalk"); walk > 0)
        m_walk.start(walk);
    Q_EMIT changed();
    match();
}

void PlayedWps::press(const QString& bssid)
{
    const int walk = m_description.delays.of("wpsWalk");
    m_pressed.insert(bssid, walk > 0 ? QDeadlineTimer(walk) : QDeadlineTimer::Forever);
    match();
}

void PlayedWps::enterPin(const QString& bssid, const QString& pin)
{
    m_pinBssid = bssid;
    m_enteredPin = pin;
    match();
}

void PlayedWps::match()
{
    if (!m_running || m_exchange.isActive())
        return;
    if (m_pin.isEmpty())
        matchButton();
    else
        matchPin();
}

void PlayedWps::matchButton()
{
    QStringList open;
    for (auto press = m_pressed.constBegin(); press != m_pressed.constEnd(); ++press)
        if (!press->hasExpired())
            open.append(press.key());
    if (open.size() > 1)
        fail(QStringLiteral("WPS push buttons of two access points overlap"));
    else if (!open.isEmpty())
        exchange(open.first());
}

void PlayedWps::matchPin()
{
    if (m_enteredPin.isEmpty())
        return;
    if (m_enteredPin == m_pin)
        exchange(m_pinBssid);
    else
        fail(QStringLiteral("The access point was given another WPS PIN"));
}

void PlayedWps::exchange(const QString& bssid)
{
    m_target = bssid;
    m_walk.stop();
    m_exchange.start(m_description.delays.of("wps"));
}

void PlayedWps::finish()
{
    const int index = m_description.find(m_target);
    if (index < 0)
        return fail(QStringLiteral("The access point has gone"));
    const auto& point = m_description.accessPoints.at(index);
    if (point.security == Security::Wep)
        return fail(QStringLiteral("The access point offers WEP only"));
    if (point.security == Security::Enterprise)
        return fail(QStringLiteral("The access point wants an account"));
    m_pressed.clear();
    m_enteredPin.clear();
    Q_EMIT m_world.wpsSucceeded({point.ssid, point.security, point.key});
    end();
}

void PlayedWps::fail(const QString& message)
{
    m_pressed.clear();
    m_enteredPin.clear();
    Q_EMIT m_world.wpsFailed(message);
    end();
}

void PlayedWps::end()
{
    m_walk.stop();
    m_exchange.stop();
    if (!m_running)
        return;
    m_running = false;
    Q_EMIT changed();
}
