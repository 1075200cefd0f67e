// SPDX-License-Identifier: Apache-2.0
#include "networking.h"
#include "networkingerror.h"
#include "networkinglog.h"

namespace {

/// The time for which a shutdown is announced before everything stops.
constexpr int shutdownDelayMs = 2000;

/// The translation context of what a stop is answered.
constexpr auto stopContext = "void Networking::on_stop_req(const CMSetDataRequest&)";

} // namespace

void Networking::configureShutdownTimer()
{
    m_shutdownTimer.setSingleShot(true);
    m_shutdownTimer.setInterval(shutdownDelayMs);
    connect(&m_shutdownTimer, &QTimer::timeout, this, &Networking::on_shutdownTimer_timeout);
}

void Networking::setLife(NetworkingLife life)
{
    if (life == m_life)
        return;
    LOG4CPLUS_DEBUG(networkingLogger(), "Life: " << NetworkingLife::toString(m_life) << " -> "
                                                 << NetworkingLife::toString(life));
    m_life = life;
}

void Networking::on_start_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (m_life == NetworkingLife::Started) {
        const QString text = QStringLiteral("start_req called while already started!");
        LOG4CPLUS_ERROR(networkingLogger(), text);
        return request.fail(networkingFailure(text));
    }
    cancelShutdown();
    setLife(NetworkingLife::Started);
    m_profiles.start();
    request.answer();
}

void Networking::on_stop_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const NetworkingLife before = m_life;
    if (before.isStarted())
        setLife(NetworkingLife::Stopping);
    if (!m_lowlevel->disconnect()) {
        setLife(before);
        LOG4CPLUS_WARN(networkingLogger(), "Unable to disconnect!");
        return request.fail(
            networkingFailure(TrString(trExtractContext(stopContext), "Unable to disconnect!")));
    }
    m_picture.edit([](OrvaNetworkInfo& info) { info = withUnconfiguredIdle(info, {}); });
    m_softAps.clearSoftAp();
    m_localSoftAp.deactivateLocalSoftAp();
    m_localSoftAp.stopSoftApTimer();
    m_shutdownTimer.stop();
    setLife(NetworkingLife::Stopped);
    beginJoin();
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
    if (m_life.isShuttingDown())
        return request.fail(CMError::failed(QStringLiteral("Shutdown in progress")));
    setLife(m_life.isStarted() ? NetworkingLife::ShuttingDown
                               : NetworkingLife::ShuttingDownStopped);
    m_picture.shutDown();
    m_shutdownTimer.start();
    request.answer();
}

void Networking::on_shutdownTimer_timeout()
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (m_life.isShuttingDown())
        on_stop_req(CMSetDataRequest());
    // The picture goes back to the links that are up where the backend refused to disconnect.
    cancelShutdown();
}

void Networking::cancelShutdown()
{
    m_shutdownTimer.stop();
    if (!m_life.isShuttingDown())
        return;
    setLife(m_life.isStarted() ? NetworkingLife::Started : NetworkingLife::Stopped);
    LOG4CPLUS_INFO(networkingLogger(), "The pending shutdown is called off");
    m_picture.cancelShutdown(m_profiles.inUse(), m_softAps.calculateSoftApState());
}
