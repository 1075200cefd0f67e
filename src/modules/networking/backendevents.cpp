// SPDX-License-Identifier: Apache-2.0
// The reports of the backend that concern several rooms.
#include "backend/softapinterface.h"
#include "networking.h"
#include "networkinglog.h"

QStringList Networking::disconnectingInterfaces() const
{
    return m_picture.disconnecting() + m_softAps.disconnectingInterfaces();
}

void Networking::setLinkStatus(const QString& interface, bool up)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(networkingLogger(), "linkStatus: " << interface << " is " << up);
    if (isSoftApInterface(interface))
        m_softAps.setLinkStatus(interface, up);
    else
        setNetworkLinkStatus(interface, up);
    m_picture.updateCurrentMac();
}

void Networking::setNetworkLinkStatus(const QString& interface, bool up)
{
    if (up) {
        m_localSoftAp.stopSoftApTimer();
        m_localSoftAp.deactivateLocalSoftAp();
    }
    if (up && interface == m_wirelessInterfaceName)
        m_profiles.stopCountingAuthFailures();
    m_picture.setLinkStatus(interface, up, m_profiles.configured());
    if (up)
        m_lastJoin.checkHindrance();
    else if (interface == m_wirelessInterfaceName)
        beginJoin();
    if (!m_picture.isLinkUp())
        restartSoftApTimer(m_profiles.inUse(), m_profiles.inUse());
    if (m_picture.info().wired().state() == OrvaNetworkState::Connected)
        m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, false);
}

void Networking::restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                                    const OrvaNetworkProfile& oldProfile)
{
    m_localSoftAp.restartSoftApTimer(newProfile, oldProfile, m_profiles.configured().wireless);
}

void Networking::beginJoin()
{
    const OrvaNetworkProfile& profile = m_profiles.inUse();
    m_lastJoin.begin(m_profiles.configured().wireless ? profile.wireless().ssid() : QString(),
                     profile.type() == OrvaNetworkProfileType::Auto);
}

void Networking::setDisconnecting(const QString& interface)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const bool ours = interface == m_wiredInterfaceName || interface == m_wirelessInterfaceName;
    if (!ours && isSoftApInterface(interface))
        m_softAps.setDisconnecting(interface);
    else if (!ours)
        LOG4CPLUS_WARN(networkingLogger(), "Disconnecting unknow interface: " << interface);
    m_picture.setDisconnecting(interface);
    updateConnectingMessage(QString());
}

void Networking::updateConnectingMessage(const QString& message)
{
    // The message of a WPS session stays.
    if (!message.isEmpty() || !m_wpsSession.isRunning())
        m_picture.updateConnectingMessage(message);
}

void Networking::setCurrentCableStatus(bool connected)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_TRACE(networkingLogger(), "connected: " << connected);
    m_picture.setCurrentCableStatus(connected, m_profiles.configured());
    if (!connected && m_profiles.configured().wireless)
        m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, true);
}

void Networking::on_lowlevel_AuthError(const QString& ssid, const QString& description)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_TRACE(networkingLogger(), "ssid: " << ssid << "description: " << description);
    updateConnectingMessage(description);
    m_picture.setAuthError(ssid);
    m_lastJoin.refuseKey(ssid);
    m_profiles.countAuthFailure();
}

void Networking::on_lowlevel_Error(const QString& message)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_ERROR(networkingLogger(), "Received low-level network error: " << message);
}

void Networking::on_lowlevel_InterfaceStatusChanged(const QString& interface,
                                                    Networking_LowLevel::InterfaceStatus status)
{
    LOG4CPLUS_TRACE(networkingLogger(), "Interface: " << interface << " status: " << status);
    if (interface != m_wirelessInterfaceName)
        return;
    m_lastJoin.follow(status);
    m_localSoftAp.restoreLocalSoftAp();
    if (status == Networking_LowLevel::Idle)
        m_scans.startQueuedScans();
}
