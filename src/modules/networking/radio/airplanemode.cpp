// SPDX-License-Identifier: Apache-2.0
#include "radio/airplanemode.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "picture/picture.h"
#include "radio/radioblock.h"

AirplaneMode::AirplaneMode(Picture& picture, RadioBlock& radios)
    : m_picture(picture)
    , m_radios(radios)
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
    m_radios.apply(on);
    m_picture.edit([on](OrvaNetworkInfo& info) { info.setAirplaneMode(on); });
}
