// SPDX-License-Identifier: Apache-2.0
#include "radio/airplanemode.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "orvaprocesshandler.h"
#include "picture/picture.h"

namespace {

/// The time for which rfkill may block the event loop.
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

AirplaneMode::AirplaneMode(Picture& picture)
    : m_picture(picture)
    , m_airplaneModeType(readValue(OrvaNetworkAirplaneModeTypeSettingPath()).airplaneModeType())
{
}

void AirplaneMode::follow(CMValueNode* node)
{
    // Connected first, so that the stored airplane mode is applied.
    connect(node, &CMValueNode::valueChanged, this, &AirplaneMode::on_airplaneMode_changed);
    node->setValue(OrvaValue::of(m_picture.info().airplaneMode()));
}

bool AirplaneMode::isSwitch(const CMSetDataRequest& request)
{
    return request.path() == OrvaNetworkAirplaneModePath() &&
           request.role() == OrvaRoles::Value() && request.value().typeKey() == OrvaValue::Bool();
}

void AirplaneMode::store(const CMSetDataRequest& request, const std::function<void()>& move)
{
    const auto stored = CMReply<QVariant>::create();
    stored.addWatcher(
        this,
        [request, move](const CMReply<QVariant>& reply) {
            if (reply.error().isEmpty())
                move();
            else
                request.fail(reply.error());
        },
        Qt::DirectConnection);
    CMRoot()->setValue(OrvaNetworkAirplaneModeSettingPath(), request.value(), stored);
    // Not put off: switches that were stored together would run rfkill one after the other.
    stored.data()->hurry();
}

void AirplaneMode::on_airplaneMode_changed(const OrvaValue& value)
{
    const bool on = value.bool_();
    LOG4CPLUS_INFO(networkingLogger(), "Airplane mode switched to: " << on);
    runRfkill(rfkillArguments(on, m_airplaneModeType));
    m_picture.edit([on](OrvaNetworkInfo& info) { info.setAirplaneMode(on); });
}
