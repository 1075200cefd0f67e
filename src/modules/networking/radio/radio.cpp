#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "orvaprocesshandler.h"
#include "power/powerrecords.h"

#include <algorithm>

namespace {

/// How long rfkill may block the event loop.
constexpr int rfkillTimeoutMs = 5000;

QString toLog(const QSet<Networking::ResourceRequestSubmodule>& submodules)
{
    QList<int> sorted(submodules.begin(), submodules.end());
    std::sort(sorted.begin(), sorted.end());
    QStringList numbers;
    for (const int number : std::as_const(sorted))
        numbers << QString::number(number);
    return QStringLiteral("QSet(%1)").arg(numbers.join(QStringLiteral(", ")));
}

void askPowerManager(OrvaPowerModuleActions action)
{
    OrvaPowerManagerResourceRequest request;
    request.setModuleName(OrvaNetworkName());
    request.setResource(OrvaPowerManagerResources::Wifi);
    request.setAction(action);
    CMRoot()->invoke(OrvaPowerManagerResourceRequestPath(), request, CMReply<QVariant>::create());
}

QStringList rfkillArguments(bool airplaneMode, OrvaAirplaneModeType type)
{
    if (!airplaneMode) {
        LOG4CPLUS_INFO(networkingLogger(),
                       "airplaneMode disabled, wifi/bluetooth will now work again");
        return {QStringLiteral("unblock"), QStringLiteral("all")};
    }
    if (type == OrvaAirplaneModeType::WifiOnly) {
        LOG4CPLUS_INFO(networkingLogger(),
                       "airplaneMode enabled, only wifi will be blocked, BT will still work");
        return {QStringLiteral("block"), QStringLiteral("wifi")};
    }
    LOG4CPLUS_INFO(networkingLogger(), "airplaneMode enabled, wifi & bluetooth will be blocked");
    return {QStringLiteral("block"), QStringLiteral("all")};
}

void runRfkill(const QStringList& arguments)
{
    const OrvaProcessHandlerResult result =
        OrvaProcessHandler::startSync(QStringLiteral("rfkill"), arguments, rfkillTimeoutMs);
    if (result.finishedOk())
        LOG4CPLUS_DEBUG(networkingLogger(), "rfkill completed successfully");
    else
        LOG4CPLUS_ERROR(networkingLogger(), "rfkill failed: " << result.getData());
}

} // namespace

void Networking::requestWifiResource(ResourceRequestSubmodule submodule, bool enable)
{
    LOG4CPLUS_DEBUG(networkingLogger(), "submodule " << submodule << " enable " << enable);
    if (enable)
        m_activeSubmodules.insert(submodule);
    else
        m_activeSubmodules.remove(submodule);
    LOG4CPLUS_DEBUG(networkingLogger(), "Active submodules: " << toLog(m_activeSubmodules));
    if (m_activeSubmodules.isEmpty()) {
        m_releaseWifiResourceTimer.start();
        return;
    }
    m_releaseWifiResourceTimer.stop();
    LOG4CPLUS_DEBUG(networkingLogger(), "Requesting resources");
    askPowerManager(OrvaPowerModuleActions::Request);
}

void Networking::on_releaseWifiResource_timeout()
{
    LOG4CPLUS_DEBUG(networkingLogger(), "Releasing resources");
    askPowerManager(OrvaPowerModuleActions::Release);
}

void Networking::setDataRequest(const CMSetDataRequest& request)
{
    const bool switchesAirplaneMode = request.path() == OrvaNetworkAirplaneModePath() &&
                                      request.role() == OrvaRoles::Value() &&
                                      request.value().typeKey() == OrvaValue::Bool();
    if (!switchesAirplaneMode)
        return CMNodesWorker::setDataRequest(request);
    const auto stored = CMReply<QVariant>::create();
    stored.addWatcher(
        this,
        [this, request](const CMReply<QVariant>& reply) {
            if (reply.error().isEmpty())
                CMNodesWorker::setDataRequest(request);
            else
                request.fail(reply.error());
        },
        Qt::DirectConnection);
    CMRoot()->setValue(OrvaNetworkAirplaneModeSettingPath(), request.value(), stored);
    // Each at once: those that were stored together would run rfkill in a row.
    stored.data()->hurry();
}

void Networking::on_airplaneMode_changed(const OrvaValue& value)
{
    const bool on = value.bool_();
    LOG4CPLUS_INFO(networkingLogger(), "Airplane mode switched to: " << on);
    runRfkill(rfkillArguments(on, m_airplaneModeType));
    OrvaNetworkInfo published = info();
    published.setAirplaneMode(on);
    publishInfo(published);
}

void Networking::on_forceWifiReconnect_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    m_lowlevel->forceWifiReconnect();
    request.answer();
}

void Networking::on_wirelessRssiNode_activated(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const double rssi = m_lowlevel->getWirelessRssi();
    if (rssi == 0.0) {
        request.fail(CMError(QStringLiteral("Error"), TrString(trExtractContext(Q_FUNC_INFO),
                                                               "Unable to get wireless rssi")));
        return;
    }
    OrvaValue value;
    value.setDouble_(rssi);
    request.answer(value);
}
