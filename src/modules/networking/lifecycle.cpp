#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "nodevalues.h"
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
    const Configured configured = std::exchange(m_configured, {});
    if (!m_lowlevel->disconnect()) {
        m_configured = configured;
        LOG4CPLUS_WARN(networkingLogger(), "Unable to disconnect!");
        return request.fail(CMError(QStringLiteral("Error"), TrString(trExtractContext(Q_FUNC_INFO),
                                                                      "Unable to disconnect!")));
    }
    m_picture.edit([](OrvaNetworkInfo& info) { info = withUnconfiguredIdle(info, {}); });
    m_softAps.clearSoftAp();
    m_localSoftAp.deactivateLocalSoftAp();
    m_localSoftAp.stopSoftApTimer();
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
    m_picture.shutDown();
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
    m_picture.cancelShutdown(m_profile, m_softAps.calculateSoftApState());
}
