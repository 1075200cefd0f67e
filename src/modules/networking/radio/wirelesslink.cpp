// SPDX-License-Identifier: Apache-2.0
#include "radio/wirelesslink.h"

#include "backend/networkinglowlevel.h"
#include "networkingerror.h"
#include "networkinglog.h"

namespace {

// The names of the slots in the log and in the translations.
constexpr auto reconnectContext =
    "void Networking::on_forceWifiReconnect_req(const CMSetDataRequest&)";
constexpr auto rssiContext =
    "void Networking::on_wirelessRssiNode_activated(const CMSetDataRequest&)";

} // namespace

WirelessLink::WirelessLink(Networking_LowLevel& backend)
    : m_lowlevel(backend)
{
}

void WirelessLink::on_forceWifiReconnect_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), reconnectContext);
    m_lowlevel.forceWifiReconnect();
    request.answer();
}

void WirelessLink::on_wirelessRssiNode_activated(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), rssiContext);
    const double rssi = m_lowlevel.getWirelessRssi();
    if (rssi == 0.0)
        return request.fail(networkingFailure(
            TrString(trExtractContext(rssiContext), "Unable to get wireless rssi")));
    request.answer(OrvaValue::of(rssi));
}
