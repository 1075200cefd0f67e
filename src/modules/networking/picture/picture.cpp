// SPDX-License-Identifier: Apache-2.0
#include "picture/picture.h"

#include "backend/networkinglowlevel.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "picture/currentstateprofile.h"
#include "picture/webserverurl.h"

#include <utility>

namespace {

QString textOf(OrvaNetworkState state)
{
    switch (state) {
    case OrvaNetworkState::Connected:
        return QStringLiteral("Connected");
    case OrvaNetworkState::Disconnecting:
        return QStringLiteral("Disconnecting");
    case OrvaNetworkState::Disconnected:
        break;
    }
    return QStringLiteral("Disconnected");
}

} // namespace

Picture::Picture(const CMNodes& nodes, Networking_LowLevel& backend, const QString& wired,
                 const QString& wireless)
    : m_lowlevel(backend)
    , m_infoNode(valueNode(nodes, OrvaNetworkInfoPath()))
    , m_stateNode(valueNode(nodes, OrvaNetworkStatePath()))
    , m_stateConnectedNode(valueNode(nodes, OrvaNetworkStateConnected()))
    , m_connectingMessageNode(valueNode(nodes, OrvaNetworkConnectingMessage()))
    , m_currentStateNode(valueNode(nodes, OrvaNetworkCurrentStatePath()))
    , m_ethernetMacNode(valueNode(nodes, OrvaNetworkStateEthernetMAC()))
    , m_wirelessMacNode(valueNode(nodes, OrvaNetworkStateWirelessMAC()))
    , m_currentMacNode(valueNode(nodes, OrvaNetworkStateCurrentMAC()))
    , m_cableStatusNode(valueNode(nodes, OrvaNetworkStateCurrentCableStatus()))
    , m_webserverUrlNode(valueNode(nodes, OrvaNetworkLocalWebserverUrlPath()))
    , m_localhostUrlNode(valueNode(nodes, OrvaNetworkLocalWebserverLocalhostUrlPath()))
{
    const QString ethernetMac = backend.getEthernetMAC().toUpper();
    const QString wirelessMac = backend.getWirelessMAC().toUpper();
    const bool airplaneMode = readValue(OrvaNetworkAirplaneModeSettingPath()).bool_();
    const bool cable = backend.cableStatus();
    m_stateConnectedNode->setValue(OrvaValue::of(false));
    publishInfo(firstInfo({wired, ethernetMac}, {wireless, wirelessMac}, cable, airplaneMode));
    m_stateNode->setValue(OrvaValue::of(info().state()));
    m_connectingMessageNode->setValue(OrvaValue::of(QString()));
    m_cableStatusNode->setValue(OrvaValue::of(cable));
    publishFirstMacs(ethernetMac, wirelessMac);
    publishLocalhostUrl();
}

void Picture::publishFirstMacs(const QString& ethernetMac, const QString& wirelessMac)
{
    LOG4CPLUS_INFO(networkingLogger(), "Ethernet MAC address: " << ethernetMac);
    m_ethernetMacNode->setValue(OrvaValue::of(ethernetMac));
    LOG4CPLUS_INFO(networkingLogger(), "Wireless MAC address: " << wirelessMac);
    m_wirelessMacNode->setValue(OrvaValue::of(wirelessMac));
    m_currentMacNode->setValue(OrvaValue::of(ethernetMac.isEmpty() ? wirelessMac : ethernetMac));
    m_macMissed = currentMac().isEmpty();
}

void Picture::publishLocalhostUrl()
{
    m_webserverPortSuffix = webserverPortSuffix(readValue(OrvaWebserverPortPath()).i32_());
    m_localhostUrlNode->setValue(OrvaValue::of(QStringLiteral("http://localhost") +
                                               m_webserverPortSuffix + QLatin1Char('/')));
}

OrvaNetworkInfo Picture::info() const
{
    return m_infoNode->value().networkInfo();
}

bool Picture::linkStatus() const
{
    return m_stateConnectedNode->value().bool_();
}

bool Picture::currentCableStatus() const
{
    return m_cableStatusNode->value().bool_();
}

QString Picture::currentMac() const
{
    return m_currentMacNode->value().string_();
}

void Picture::publishInfo(const OrvaNetworkInfo& info)
{
    m_infoNode->setValue(OrvaValue::of(info));
}

void Picture::publishInfoAndState(OrvaNetworkInfo info)
{
    info.setState(calculateNetworkInfoState(info));
    const OrvaNetworkState old = m_stateNode->value().networkState();
    if (old != info.state())
        LOG4CPLUS_INFO(networkingLogger(),
                       "Network state: " << OrvaNetworkState::toString(old) << " -> "
                                         << OrvaNetworkState::toString(info.state()));
    publishInfo(info);
    m_stateConnectedNode->setValue(OrvaValue::of(isLinkUp()));
    m_stateNode->setValue(OrvaValue::of(info.state()));
}

void Picture::setLinkStatus(const QString& interface, bool up, Configured configured)
{
    if (up)
        m_linksUp.insert(interface);
    else
        m_linksUp.remove(interface);
    editStates([&](OrvaNetworkInfo& info) {
        info = withInterfaceState(
            info, interface, up ? OrvaNetworkState::Connected : OrvaNetworkState::Disconnected);
        info = withConnectingStatus(info, isLinkUp(), configured);
    });
}

void Picture::setDisconnecting(const QString& interface)
{
    m_downByShutdown.removeAll(interface);
    editStates([&](OrvaNetworkInfo& info) {
        info = withInterfaceState(info, interface, OrvaNetworkState::Disconnecting);
    });
}

void Picture::setSoftApState(OrvaNetworkState state)
{
    edit([&](OrvaNetworkInfo& info) {
        info.editSoftAp([&](auto& softAp) { softAp.setState(state); });
    });
}

void Picture::setCurrentCableStatus(bool connected, Configured configured)
{
    m_cableStatusNode->setValue(OrvaValue::of(connected));
    edit([&](OrvaNetworkInfo& info) { info = withCable(info, connected, configured); });
}

void Picture::setAuthError(const QString& ssid)
{
    edit([&](OrvaNetworkInfo& info) {
        info = updateCredentialsSuspect(info, ssid, true);
        info.editWireless([](auto& wireless) {
            wireless.setConnectingStatus(OrvaNetworkConnectingStatus::AuthenticationFailed);
        });
    });
}

void Picture::updateConnectingMessage(const QString& message)
{
    m_connectingMessageNode->setValue(
        OrvaValue::of(message.isEmpty() ? textOf(info().state()) : message));
}

void Picture::updateCurrentMac()
{
    const OrvaNetworkInfo published = info();
    const bool softApRuns = published.softAp().state() == OrvaNetworkState::Connected;
    QString mac;
    if (m_linksUp.contains(published.wired().name()) || (!isLinkUp() && !softApRuns))
        mac = m_lowlevel.getEthernetMAC().toUpper();
    if (mac.isEmpty())
        mac = m_lowlevel.getWirelessMAC().toUpper();
    m_currentMacNode->setValue(OrvaValue::of(mac));
}

QStringList Picture::disconnecting() const
{
    return interfacesIn(info(), OrvaNetworkState::Disconnecting);
}

void Picture::shutDown()
{
    m_downByShutdown = interfacesIn(info(), OrvaNetworkState::Connected);
    editStates([](OrvaNetworkInfo& info) { info = shuttingDown(info); });
}

void Picture::cancelShutdown(const OrvaNetworkProfile& profile, OrvaNetworkState softApState)
{
    editStates([&](OrvaNetworkInfo& info) {
        info = shutdownCancelled(info, m_downByShutdown);
        info.setWirelessNetworks(knownNetworks(profile));
        info.editSoftAp([&](auto& softAp) { softAp.setState(softApState); });
    });
}

// Several changes may come at once, and each readout asks the backend and waits.
void Picture::on_lowlevel_AddressesChanged()
{
    if (std::exchange(m_addressesChanged, true))
        return;
    QMetaObject::invokeMethod(this, &Picture::readNetworkState, Qt::QueuedConnection);
}

void Picture::readNetworkState()
{
    m_addressesChanged = false;
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const OrvaNetworkInfo snapshot = m_lowlevel.getNetworkState();
    const OrvaNetworkInfo old = info();
    OrvaNetworkInfo merged = old;
    merged.__mergeWith(snapshot);
    m_currentStateNode->setValue(OrvaValue::of(currentStateProfile(merged)));

    merged = updateCredentialsSuspect(withWorkerFields(merged, old), old.wireless().ssid(), false);
    publishInfo(merged);
    m_ethernetMacNode->setValue(OrvaValue::of(merged.wired().mac()));
    m_wirelessMacNode->setValue(OrvaValue::of(merged.wireless().mac()));
    recoverCurrentMac();
    updateWebserverUrl();
    Q_EMIT networkStateRead();
}

/// A backend that did not answer at the construction left no MAC address, and none for the soft
/// AP's own SSID. Silence at a later time must not rename the soft AP.
void Picture::recoverCurrentMac()
{
    if (!m_macMissed)
        return;
    updateCurrentMac();
    m_macMissed = currentMac().isEmpty();
    if (!m_macMissed)
        Q_EMIT currentMacRecovered();
}

void Picture::updateWebserverUrl()
{
    const QString url = webserverUrl(m_lowlevel.getNetworkState(), m_webserverPortSuffix);
    m_webserverUrlNode->setValue(url.isEmpty() ? m_localhostUrlNode->value() : OrvaValue::of(url));
}
