#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "picture/networkinforules.h"
#include "profile/networkprofilerules.h"

#include <utility>

void Networking::on_start_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (m_started && !m_shutdownInProgress) {
        const QString text = QStringLiteral("start_req called while already started!");
        LOG4CPLUS_ERROR(networkingLogger(), text);
        return request.fail(CMError(QStringLiteral("Error"), text));
    }
    cancelShutdown();
    m_started = true;

    // A profile that is still being stored is in use.
    const OrvaNetworkProfile stored =
        m_profileRequests.isEmpty()
            ? readValue(OrvaNetworkCurrentProfileSettingsPath()).networkProfile()
            : m_profile;
    LOG4CPLUS_DEBUG(networkingLogger(), "Initializing connection, profile: " << stored);
    useProfile(withNetworkList(stored));
    request.answer();
}

void Networking::on_stop_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    // Cleared first: a link that goes down inside the call is not one that connects again.
    const bool wiredConfigured = std::exchange(m_wiredConfigured, false);
    const bool wirelessConfigured = std::exchange(m_wirelessConfigured, false);
    if (!m_lowlevel->disconnect()) {
        m_wiredConfigured = wiredConfigured;
        m_wirelessConfigured = wirelessConfigured;
        LOG4CPLUS_WARN(networkingLogger(), "Unable to disconnect!");
        return request.fail(CMError(QStringLiteral("Error"), TrString(trExtractContext(Q_FUNC_INFO),
                                                                      "Unable to disconnect!")));
    }
    publishInfo(withUnconfiguredIdle(info(), false, false));
    m_softAps->clearSoftAp();
    deactivateLocalSoftAp();
    stopSoftApTimer();
    m_started = false;
    m_shutdownTimer.stop();
    m_shutdownInProgress = false;
    m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, false);
    m_wifiResource.requestWifiResource(WifiResource::SoftAp, false);
    m_wifiResource.requestWifiResource(WifiResource::Scan, false);
    request.answer();
}

void Networking::on_restart_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    on_stop_req(CMSetDataRequest());
    on_start_req(CMSetDataRequest());
    request.answer();
}

void Networking::on_shutdown_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (m_shutdownInProgress)
        return request.fail(
            CMError(QStringLiteral("error"), QStringLiteral("Shutdown in progress")));
    m_shutdownInProgress = true;
    m_downByShutdown = interfacesIn(info(), OrvaNetworkState::Connected);
    publishInfoAndState(shuttingDown(info()));
    m_shutdownTimer.start();
    request.answer();
}

void Networking::on_shutdownTimer_timeout()
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (m_shutdownInProgress)
        on_stop_req(CMSetDataRequest());
    // Where the backend refused to disconnect, the picture goes back to what is up.
    cancelShutdown();
}

void Networking::cancelShutdown()
{
    m_shutdownTimer.stop();
    if (!std::exchange(m_shutdownInProgress, false))
        return;
    LOG4CPLUS_INFO(networkingLogger(), "The pending shutdown is called off");
    OrvaNetworkInfo updated = shutdownCancelled(info(), m_downByShutdown);
    updated.setWirelessNetworks(knownNetworks(m_profile));
    publishInfoAndState(withSoftApState(updated, m_softAps->calculateSoftApState()));
}
