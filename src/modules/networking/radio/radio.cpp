#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "orvaprocesshandler.h"

namespace {

/// How long rfkill may block the event loop.
constexpr int rfkillTimeoutMs = 5000;

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
