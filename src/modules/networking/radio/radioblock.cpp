// SPDX-License-Identifier: Apache-2.0
#include "radio/radioblock.h"

#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "orvaprocesshandler.h"

#include <utility>

namespace {

/// The time for which rfkill may block the event loop.
constexpr int rfkillTimeoutMs = 5000;

std::unique_ptr<OrvaProcessRun> startRfkill(const QStringList& arguments)
{
    return std::make_unique<OrvaProcessRun>(QStringLiteral("rfkill"), arguments);
}

void logSwitch(bool airplaneMode, OrvaAirplaneModeType type)
{
    if (!airplaneMode)
        LOG4CPLUS_INFO(networkingLogger(),
                       "airplaneMode disabled, wifi/bluetooth will now work again");
    else if (type == OrvaAirplaneModeType::WifiOnly)
        LOG4CPLUS_INFO(networkingLogger(),
                       "airplaneMode enabled, only wifi will be blocked, BT will still work");
    else
        LOG4CPLUS_INFO(networkingLogger(),
                       "airplaneMode enabled, wifi & bluetooth will be blocked");
}

} // namespace

RadioBlock::RadioBlock()
    : m_airplaneModeType(readValue(OrvaNetworkAirplaneModeTypeSettingPath()).airplaneModeType())
    , m_storedRun(startRfkill(arguments(readValue(OrvaNetworkAirplaneModeSettingPath()).bool_())))
{
}

RadioBlock::~RadioBlock() = default;

QStringList RadioBlock::arguments(bool airplaneMode) const
{
    if (!airplaneMode)
        return {QStringLiteral("unblock"), QStringLiteral("all")};
    if (m_airplaneModeType == OrvaAirplaneModeType::WifiOnly)
        return {QStringLiteral("block"), QStringLiteral("wifi")};
    return {QStringLiteral("block"), QStringLiteral("all")};
}

void RadioBlock::apply(bool airplaneMode)
{
    logSwitch(airplaneMode, m_airplaneModeType);
    auto run = std::exchange(m_storedRun, nullptr);
    if (!run)
        run = startRfkill(arguments(airplaneMode));
    const OrvaProcessHandlerResult result = run->wait(rfkillTimeoutMs);
    if (result.finishedOk())
        LOG4CPLUS_DEBUG(networkingLogger(), "rfkill completed successfully");
    else
        LOG4CPLUS_ERROR(networkingLogger(), "rfkill failed: " << result.getData());
}
