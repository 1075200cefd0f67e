#include "backend/softapinterface.h"
#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "picture/networkinforules.h"
#include "profile/networkprofilerules.h"

#include <utility>

OrvaNetworkState Networking::calculateNetworkInfoState(const OrvaNetworkInfo& info)
{
    return ::calculateNetworkInfoState(info);
}

bool Networking::linkStatus() const
{
    return m_stateConnectedNode->value().bool_();
}

bool Networking::currentCableStatus() const
{
    return m_cableStatusNode->value().bool_();
}

OrvaNetworkInfo Networking::info() const
{
    return m_infoNode->value().networkInfo();
}

void Networking::publishInfo(const OrvaNetworkInfo& info)
{
    m_infoNode->setValue(toValue(info));
}

void Networking::publishInfoAndState(OrvaNetworkInfo info)
{
    info.setState(calculateNetworkInfoState(info));
    const OrvaNetworkState old = m_stateNode->value().networkState();
    if (old != info.state())
        LOG4CPLUS_INFO(networkingLogger(),
                       "Network state: " << OrvaNetworkState::toString(old) << " -> "
                                         << OrvaNetworkState::toString(info.state()));
    publishInfo(info);
    m_stateConnectedNode->setValue(toValue(!m_linksUp.isEmpty()));
    m_stateNode->setValue(toValue(info.state()));
}

void Networking::updateConnectingMessage(const QString& message)
{
    if (!message.isEmpty())
        return m_connectingMessageNode->setValue(toValue(message));
    if (m_wpsRequest)
        return;
    const auto textOf = [](OrvaNetworkState state) {
        switch (state) {
        case OrvaNetworkState::Connected:
            return QStringLiteral("Connected");
        case OrvaNetworkState::Disconnecting:
            return QStringLiteral("Disconnecting");
        case OrvaNetworkState::Disconnected:
            break;
        }
        return QStringLiteral("Disconnected");
    };
    m_connectingMessageNode->setValue(toValue(textOf(info().state())));
}

void Networking::setLinkStatus(const QString& interface, bool up)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(networkingLogger(), "linkStatus: " << interface << " is " << up);
    if (isSoftApInterface(interface))
        m_softAps->setLinkStatus(interface, up);
    else
        setNetworkLinkStatus(interface, up);
    updateCurrentMac();
}

void Networking::setNetworkLinkStatus(const QString& interface, bool up)
{
    if (up) {
        stopSoftApTimer();
        deactivateLocalSoftAp();
        m_linksUp.insert(interface);
    } else {
        m_linksUp.remove(interface);
    }
    if (up && interface == m_wirelessInterfaceName)
        m_authFailureCount = -1;
    const bool linkUp = !m_linksUp.isEmpty();
    const OrvaNetworkInfo changed = withInterfaceState(
        info(), interface, up ? OrvaNetworkState::Connected : OrvaNetworkState::Disconnected);
    publishInfoAndState(
        withConnectingStatus(changed, linkUp, m_wiredConfigured, m_wirelessConfigured));
    if (!linkUp)
        restartSoftApTimer(m_profile, m_profile);
    if (info().wired().state() == OrvaNetworkState::Connected)
        m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, false);
}

void Networking::updateCurrentMac()
{
    QString mac;
    const bool softApRuns = info().softAp().state() == OrvaNetworkState::Connected;
    if (m_linksUp.contains(m_wiredInterfaceName) || (m_linksUp.isEmpty() && !softApRuns))
        mac = m_lowlevel->getEthernetMAC().toUpper();
    if (mac.isEmpty())
        mac = m_lowlevel->getWirelessMAC().toUpper();
    m_currentMacNode->setValue(toValue(mac));
}

void Networking::setDisconnecting(const QString& interface)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    m_downByShutdown.remove(interface);
    OrvaNetworkInfo updated = info();
    if (interface == m_wiredInterfaceName || interface == m_wirelessInterfaceName) {
        updated = withInterfaceState(updated, interface, OrvaNetworkState::Disconnecting);
    } else if (isSoftApInterface(interface)) {
        m_softAps->setDisconnecting(interface);
        updated = info();
    } else {
        LOG4CPLUS_WARN(networkingLogger(), "Disconnecting unknow interface: " << interface);
    }
    publishInfoAndState(updated);
    updateConnectingMessage(QString());
}

QStringList Networking::disconnectingInterfaces() const
{
    return interfacesIn(info(), OrvaNetworkState::Disconnecting).values() +
           m_softAps->disconnectingInterfaces();
}

void Networking::setCurrentCableStatus(bool connected)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_TRACE(networkingLogger(), "connected: " << connected);
    m_cableStatusNode->setValue(toValue(connected));
    OrvaNetworkInfo updated = info();
    OrvaNetworkWiredInterface wired = updated.wired();
    wired.setCableConnected(connected);
    if (!connected)
        wired.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
    else if (updated.state() == OrvaNetworkState::Disconnected && m_wiredConfigured)
        wired.setConnectingStatus(OrvaNetworkConnectingStatus::Connecting);
    updated.setWired(wired);
    publishInfo(updated);
    if (!connected && m_wirelessConfigured)
        m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, true);
}

// Many may come at once, and each readout asks the backend and waits.
void Networking::on_lowlevel_AddressesChanged()
{
    if (std::exchange(m_addressesChanged, true))
        return;
    QMetaObject::invokeMethod(this, &Networking::readNetworkState, Qt::QueuedConnection);
}

void Networking::readNetworkState()
{
    m_addressesChanged = false;
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const OrvaNetworkInfo snapshot = m_lowlevel->getNetworkState();
    OrvaNetworkInfo merged = info();
    merged.__mergeWith(snapshot);
    m_currentStateNode->setValue(toValue(currentStateProfile(merged)));

    const OrvaNetworkInfo old = info();
    merged = updateCredentialsSuspect(withWorkerFields(merged, old), old.wireless().ssid(), false);
    publishInfo(merged);
    m_ethernetMacNode->setValue(toValue(merged.wired().mac()));
    m_wirelessMacNode->setValue(toValue(merged.wireless().mac()));
    recoverCurrentMac();
    updateWebserverUrl();
}

/// A backend that did not answer at the construction left no MAC, nor one for the soft AP's own
/// SSID. One that does not later must not rename the soft AP.
void Networking::recoverCurrentMac()
{
    if (!m_macMissed)
        return;
    updateCurrentMac();
    m_macMissed = m_currentMacNode->value().string_().isEmpty();
    if (!m_macMissed)
        m_softAps->readSoftApConfiguration(m_currentMacNode->value().string_());
}

void Networking::updateWebserverUrl()
{
    const QString url = webserverUrl(m_lowlevel->getNetworkState(), m_webserverPortSuffix);
    m_webserverUrlNode->setValue(url.isEmpty() ? m_localhostUrlNode->value() : toValue(url));
}

void Networking::on_lowlevel_AuthError(const QString& ssid, const QString& description)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_TRACE(networkingLogger(), "ssid: " << ssid << "description: " << description);
    updateConnectingMessage(description);
    OrvaNetworkInfo updated = updateCredentialsSuspect(info(), ssid, true);
    OrvaNetworkWirelessInterface wireless = updated.wireless();
    wireless.setConnectingStatus(OrvaNetworkConnectingStatus::AuthenticationFailed);
    updated.setWireless(wireless);
    publishInfo(updated);

    if (m_authFailureCount < 0 || m_maxAuthFailures <= 0)
        return;
    ++m_authFailureCount;
    LOG4CPLUS_WARN(networkingLogger(), "Failed connection attempts: " << m_authFailureCount
                                                                      << " of " << m_maxAuthFailures
                                                                      << " maximum attempts");
    if (m_authFailureCount == m_maxAuthFailures)
        dropWirelessNetworks();
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
    restoreLocalSoftAp();
    if (status == Networking_LowLevel::Idle)
        startQueuedScans();
}

void Networking::restoreLocalSoftAp()
{
    // The wireless interface may have been missing at the start; a status alone is no proof of it.
    if (m_softApAutoEnabled || !readValue(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_() ||
        !m_lowlevel->hasWireless())
        return;
    m_softApAutoEnabled = true;
    if (m_localSoftApActive)
        activateLocalSoftAp();
}
