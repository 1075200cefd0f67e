// SPDX-License-Identifier: Apache-2.0
#include "world/real/realworld.h"

#include "log.h"

RealWorld::RealWorld(RealSettings settings)
    : m_settings(std::move(settings))
    , m_nameServers(m_settings)
    , m_cable(*this, m_kernel, m_nameServers, m_settings)
    , m_radio(*this, m_kernel, m_nameServers, m_settings)
    , m_softAp(*this, m_kernel, m_settings, m_radio)
{
    connect(&m_kernel, &Kernel::changed, this, &RealWorld::update);
    connect(&m_events, &DatagramSocket::received, this, &RealWorld::take);
    connect(&m_cable, &Link::settled, this, [this] { m_radio.permit(permission()); });
    const auto followUplinks = [this] { m_softAp.setUplink(m_cable.isUp() || m_radio.isUp()); };
    connect(this, &World::connected, this, followUplinks);
    connect(this, &World::disconnected, this, followUplinks);
    connect(&m_nameServers, &NameServers::failed, this, &World::failed);
}

Result<> RealWorld::open()
{
    if (const auto locked = m_lock.take(m_settings.runtimeDirectory); !locked)
        return locked;
    if (const auto listening =
            m_events.open(m_settings.runtimeDirectory + QStringLiteral("/events"));
        !listening)
        return listening;
    const auto reading = m_kernel.open();
    if (reading) {
        m_softAp.clearUp();
        update();
    }
    return reading;
}

void RealWorld::update()
{
    m_cable.update();
    m_radio.permit(permission());
    m_radio.update();
    m_softAp.update();
}

void RealWorld::take(const QByteArray& datagram)
{
    const auto event = parseDhcpEvent(datagram);
    if (!event)
        qCWarning(lcLumod) << "An event without an interface, ignoring it";
    else if (event->interface == m_settings.wired)
        m_cable.take(*event);
    else if (event->interface == m_settings.wireless)
        m_radio.take(*event);
}

RadioPermission RealWorld::permission() const
{
    return m_mode ? radioPermission(*m_mode, m_cable) : RadioPermission::Leave;
}

QStringList RealWorld::interfaces() const
{
    QStringList names;
    if (m_cable.exists())
        names.append(m_settings.wired);
    if (m_radio.exists())
        names.append(m_settings.wireless);
    if (m_softAp.exists())
        names.append(m_settings.softAp);
    return names;
}

InterfaceDetails RealWorld::details(const QString& interface) const
{
    if (interface == m_settings.wired)
        return m_cable.details();
    if (interface == m_settings.softAp)
        return m_softAp.details();
    return interface == m_settings.wireless ? m_radio.details() : InterfaceDetails();
}

void RealWorld::announce()
{
    if (!m_settings.wired.isEmpty()) {
        Q_EMIT cableChanged(m_cable.isPlugged());
        m_cable.announceStatus();
    }
    if (!m_settings.wireless.isEmpty())
        m_radio.announceStatus();
    if (!m_settings.softAp.isEmpty())
        m_softAp.announceStatus();
}

void RealWorld::bringUp(const NetworkConfiguration& configuration)
{
    m_mode = configuration.mode;
    m_cable.configure(configuration.mode != NetworkMode::Wireless, configuration.wired);
    m_radio.configure(configuration.networks, configuration.wireless, permission());
    m_softAp.welcomeNetworks();
    m_softAp.update();
}

void RealWorld::takeDown()
{
    m_mode.reset();
    m_cable.configure(false, std::nullopt);
    m_radio.takeDown();
    m_softAp.stop();
}

void RealWorld::scan()
{
    if (m_radio.exists())
        return m_radio.scan();
    Q_EMIT failed(QStringLiteral("There is no wireless interface to scan with"));
    Q_EMIT scanned({}); // nobody has to wait for it
}

void RealWorld::reassociate()
{
    m_radio.reassociate();
}

void RealWorld::startWps(const QString& pin)
{
    if (m_radio.exists())
        m_radio.startWps(pin);
    else
        Q_EMIT wpsFailed(QStringLiteral("There is no wireless interface"));
}

void RealWorld::cancelWps()
{
    m_radio.cancelWps();
}

Result<> RealWorld::startSoftAp(const QString& /*interface*/, const SoftApSettings& settings)
{
    return m_softAp.start(settings);
}

void RealWorld::stopSoftAp(const QString& interface)
{
    if (interface == m_settings.softAp)
        m_softAp.stop();
}
