// SPDX-License-Identifier: Apache-2.0
#include "online/onlinestate.h"

#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "online/onlineprobe.h"

namespace {

constexpr int onlineIntervalMs = 300000;
constexpr int retryIntervalMs = 30000;

} // namespace

OnlineState::OnlineState(const CMNodes& nodes, QObject* parent)
    : QObject(parent)
    , m_node(valueNode(nodes, OrvaNetworkStateOnlinePath()))
    , m_url(new CMValueItem(this, OrvaNetworkOnlineProbeSettingsPath()))
    , m_body(new CMValueItem(this, OrvaNetworkOnlineProbeBodySettingsPath()))
{
    m_nextTimer.setSingleShot(true);
    connect(&m_nextTimer, &QTimer::timeout, this, &OnlineState::ask);
    connect(m_url, &CMValueItem::changed, this, [this](const OrvaValue&, const OrvaValue& value) {
        if (!value.string_().isEmpty() && !probeUrl(value.string_()))
            LOG4CPLUS_WARN(networkingLogger(),
                           "Not an http URL, nothing is probed: "
                               << QUrl(value.string_()).toString(QUrl::RemoveUserInfo));
        restart();
    });
    connect(m_body, &CMValueItem::changed, this, &OnlineState::restart);
    const CMValueNode* const info = valueNode(nodes, OrvaNetworkInfoPath());
    connect(info, &CMValueNode::valueChanged, this,
            [this](const OrvaValue& value) { follow(value.networkInfo()); });
    follow(info->value().networkInfo());
    publish();
}

void OnlineState::noteEcho(bool answered)
{
    m_echo = answered ? GatewayEcho::Answered : GatewayEcho::Silent;
    publish();
}

void OnlineState::follow(const OrvaNetworkInfo& info)
{
    OrvaNetworkInfo seen;
    seen.setState(info.state());
    seen.setGateways(info.gateways());
    seen.editWireless([&](OrvaNetworkWirelessInterface& wireless) {
        wireless.setState(info.wireless().state()); // over which the gateway is asked
    });
    if (seen == m_info)
        return;
    m_info = seen;
    m_echo = GatewayEcho::Unknown;
    restart();
}

void OnlineState::restart()
{
    m_nextTimer.stop();
    delete m_probe;
    m_outcome = ProbeOutcome::Unknown;
    publish();
    ask();
}

void OnlineState::ask()
{
    const auto url = probeUrl(m_url->value().string_());
    if (!url || !hasGateway(m_info))
        return;
    m_probe = new OnlineProbe(*url, m_body->value().string_(), this);
    connect(m_probe, &OnlineProbe::finished, this, [this](ProbeOutcome outcome) {
        m_probe->deleteLater();
        m_probe.clear();
        m_outcome = outcome;
        m_nextTimer.start(outcome == ProbeOutcome::Online ? onlineIntervalMs : retryIntervalMs);
        publish();
    });
}

void OnlineState::publish()
{
    const OrvaNetworkOnline old = m_node->value().networkOnline();
    const OrvaNetworkOnline now = onlineState(m_info, m_echo, m_outcome);
    if (old != now)
        LOG4CPLUS_INFO(networkingLogger(), "Online: " << OrvaNetworkOnline::toString(old) << " -> "
                                                      << OrvaNetworkOnline::toString(now));
    m_node->setValue(OrvaValue::of(now));
}
