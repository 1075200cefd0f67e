// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedworld.h"

namespace {

Failure noSuchPoint(const QString& accessPoint)
{
    return {QStringLiteral("No such access point: ") + accessPoint};
}

} // namespace

PlayedWorld::PlayedWorld(WorldDescription description, QObject* parent)
    : World(parent)
    , m_description(std::move(description))
    , m_cable(m_description.wired, *this, m_description)
    , m_radio(m_description.wireless, *this, m_description)
    , m_softAps(*this, m_description)
{
    connect(&m_cable, &PlayedLink::settled, this, [this] { m_radio.permit(permission()); });
}

QStringList PlayedWorld::interfaces() const
{
    QStringList names{m_description.wired, m_description.wireless};
    names.removeAll(QString());
    return hasRadio() ? names + m_description.softAps.keys() : names;
}

InterfaceDetails PlayedWorld::details(const QString& interface) const
{
    if (!interfaces().contains(interface))
        return {};
    if (interface == m_description.wired)
        return m_cable.details();
    return interface == m_description.wireless ? m_radio.details() : m_softAps.details(interface);
}

InterfaceStatus PlayedWorld::status(const QString& interface) const
{
    if (interface == m_description.wired)
        return m_cable.status();
    return interface == m_description.wireless ? m_radio.status() : m_softAps.status(interface);
}

void PlayedWorld::announce()
{
    if (!m_description.wired.isEmpty()) {
        Q_EMIT cableChanged(m_description.plugged);
        m_cable.announceStatus();
    }
    if (!hasRadio())
        return;
    m_radio.announceStatus();
    m_softAps.announceStatus();
}

RadioPermission PlayedWorld::permission() const
{
    return m_off || !hasRadio() ? RadioPermission::Leave
                                : radioPermission(m_configuration.mode, m_cable);
}

void PlayedWorld::bringUp(const NetworkConfiguration& configuration)
{
    m_off = false;
    m_configuration = configuration;
    const bool wired =
        configuration.mode != NetworkMode::Wireless && !m_description.wired.isEmpty();
    m_cable.configure(wired, configuration.wired);
    m_radio.configure(configuration.networks, configuration.wireless, permission());
}

void PlayedWorld::takeDown()
{
    m_off = true;
    m_configuration = {};
    m_cable.configure(false, std::nullopt);
    m_radio.configure({}, std::nullopt, permission());
    m_softAps.stopAll();
    cancelWps();
}

void PlayedWorld::scan()
{
    if (hasRadio())
        return m_radio.scan();
    Q_EMIT failed(QStringLiteral("There is no wireless interface to scan with"));
    Q_EMIT scanned({}); // nobody has to wait for it
}

void PlayedWorld::reassociate()
{
    m_radio.reassociate();
}

void PlayedWorld::startWps(const QString& pin)
{
    if (hasRadio())
        m_radio.wps().start(pin);
    else
        Q_EMIT wpsFailed(QStringLiteral("There is no wireless interface"));
}

void PlayedWorld::cancelWps()
{
    if (m_radio.wps().isRunning())
        m_radio.wps().fail(QStringLiteral("WPS was cancelled"));
}

Result<> PlayedWorld::startSoftAp(const QString& interface, const SoftApSettings& settings)
{
    m_softAps.start(interface, settings);
    return {};
}

void PlayedWorld::stopSoftAp(const QString& interface)
{
    m_softAps.stop(interface);
}

void PlayedWorld::plug(bool plugged)
{
    if (m_description.plugged == plugged)
        return;
    m_description.plugged = plugged;
    if (m_description.wired.isEmpty())
        return;
    Q_EMIT cableChanged(plugged);
    m_cable.cableChanged();
    m_radio.permit(permission());
}

Result<QString> PlayedWorld::addAccessPoint(const QVariantMap& settings)
{
    const auto bssid = m_description.addAccessPoint(settings);
    if (bssid)
        m_radio.accessPointsChanged();
    return bssid;
}

Result<> PlayedWorld::changeAccessPoint(const QString& accessPoint, const QVariantMap& changes)
{
    const int index = m_description.find(accessPoint);
    if (index < 0)
        return noSuchPoint(accessPoint);
    const auto changed = m_description.changeAccessPoint(index, changes);
    if (changed)
        m_radio.accessPointsChanged();
    return changed;
}

Result<> PlayedWorld::removeAccessPoint(const QString& accessPoint)
{
    const int index = m_description.find(accessPoint);
    if (index < 0)
        return noSuchPoint(accessPoint);
    m_description.accessPoints.removeAt(index);
    m_radio.accessPointsChanged();
    return {};
}

Result<> PlayedWorld::withWpsOf(const QString& accessPoint,
                                const std::function<void(const QString&)>& act)
{
    const int index = m_description.find(accessPoint);
    if (index < 0)
        return noSuchPoint(accessPoint);
    if (!m_description.accessPoints.at(index).wps)
        return Failure{QStringLiteral("The access point does not do WPS: ") + accessPoint};
    act(m_description.accessPoints.at(index).bssid);
    return {};
}

Result<> PlayedWorld::pressWps(const QString& accessPoint)
{
    return withWpsOf(accessPoint, [this](const QString& bssid) { m_radio.wps().press(bssid); });
}

Result<> PlayedWorld::enterWpsPin(const QString& accessPoint, const QString& pin)
{
    return withWpsOf(accessPoint,
                     [this, pin](const QString& bssid) { m_radio.wps().enterPin(bssid, pin); });
}

Result<> PlayedWorld::failWps(const QString& message)
{
    if (!m_radio.wps().isRunning())
        return Failure{QStringLiteral("No WPS session runs")};
    m_radio.wps().fail(message);
    return {};
}

Result<> PlayedWorld::joinStation(const QString& interface, const QString& hwAddress)
{
    if (!isHardwareAddress(hwAddress))
        return Failure{QStringLiteral("Not a hardware address: ") + hwAddress};
    if (!m_softAps.join(interface, hwAddress))
        return Failure{QStringLiteral("No soft access point is up on ") + interface};
    return {};
}

Result<> PlayedWorld::leaveStation(const QString& hwAddress)
{
    if (!m_softAps.leave(hwAddress))
        return Failure{QStringLiteral("No such station: ") + hwAddress};
    return {};
}

Result<> PlayedWorld::setDelay(const QString& step, int milliseconds)
{
    const auto found = m_description.delays.values.find(step);
    if (found == m_description.delays.values.end())
        return Failure{QStringLiteral("No such step: ") + step};
    *found = milliseconds;
    return {};
}
