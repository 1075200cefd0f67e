// SPDX-License-Identifier: Apache-2.0
#include "radio/lastjoin.h"

#include "monotonicclock.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "picture/picture.h"

namespace {

constexpr int outcomeDelayMs = 1000;

using Reason = OrvaNetworkJoinReason;

} // namespace

LastJoin::LastJoin(const CMNodes& nodes, const Picture& picture, QObject* parent)
    : QObject(parent)
    , m_picture(picture)
    , m_node(valueNode(nodes, OrvaNetworkLastJoinPath()))
{
    m_node->setValue(OrvaValue::of(OrvaNetworkLastJoin()));
    m_outcomeTimer.setSingleShot(true);
    m_outcomeTimer.setInterval(outcomeDelayMs);
    connect(&m_outcomeTimer, &QTimer::timeout, this, &LastJoin::fail);
    connect(&picture, &Picture::networkStateRead, this, &LastJoin::checkJoined);
}

void LastJoin::begin(const QString& ssid, bool yieldsToCable)
{
    m_outcomeTimer.stop();
    m_ssid = ssid;
    m_yieldsToCable = yieldsToCable;
    m_keyRefused = false;
    m_reached = Reached::Nothing;
    m_setOut = false;
    checkHindrance();
}

void LastJoin::follow(Networking_LowLevel::InterfaceStatus status)
{
    using Backend = Networking_LowLevel;
    // A network that is left is told by the same status as one that is joined.
    if (m_ssid.isEmpty() || m_picture.info().wireless().state() != OrvaNetworkState::Disconnected)
        return;
    const bool setsOut = status == Backend::Connecting || status == Backend::Addressing;
    if (setsOut && m_outcomeTimer.isActive())
        fail(); // and on to the next
    if (setsOut)
        m_reached = status == Backend::Addressing ? Reached::Address : Reached::Network;
    if (std::exchange(m_setOut, setsOut) && status == Backend::Idle)
        m_outcomeTimer.start();
}

void LastJoin::refuseKey(const QString& ssid)
{
    // A refusal before the daemon has set out belongs to the try before.
    if (m_ssid.isEmpty() || m_reached == Reached::Nothing)
        return;
    m_outcomeTimer.stop();
    m_setOut = false;
    m_keyRefused = true;
    publish(ssid, Reason::KeyRefused);
}

void LastJoin::checkHindrance()
{
    if (hindrance() != Reason::None)
        fail();
}

void LastJoin::checkJoined()
{
    const OrvaNetworkWirelessInterface wireless = m_picture.info().wireless();
    if (m_ssid.isEmpty() || wireless.state() != OrvaNetworkState::Connected ||
        wireless.ssid().isEmpty())
        return;
    m_outcomeTimer.stop();
    m_ssid.clear();
    publish(wireless.ssid(), Reason::None);
}

void LastJoin::fail()
{
    m_outcomeTimer.stop();
    const bool isJoined = m_picture.info().wireless().state() == OrvaNetworkState::Connected;
    if (!m_ssid.isEmpty() && !m_keyRefused && !isJoined)
        publish(m_ssid, reason());
}

Reason LastJoin::hindrance() const
{
    const OrvaNetworkInfo info = m_picture.info();
    if (info.airplaneMode())
        return Reason::AirplaneMode;
    return m_yieldsToCable && info.wired().state() == OrvaNetworkState::Connected
               ? Reason::CableFirst
               : Reason::None;
}

Reason LastJoin::reason() const
{
    const Reason hindered = hindrance();
    if (hindered != Reason::None)
        return hindered;
    switch (m_reached) {
    case Reached::Nothing:
        return Reason::NotInRange;
    case Reached::Network:
        return Reason::Refused;
    case Reached::Address:
        break;
    }
    return Reason::NoAddress;
}

void LastJoin::publish(const QString& ssid, Reason reason)
{
    OrvaNetworkLastJoin join;
    join.setSsid(ssid);
    join.setResult(reason == Reason::None ? OrvaNetworkJoinResult::Joined
                                          : OrvaNetworkJoinResult::Failed);
    join.setReason(reason);
    join.setWhenMs(monotonicMs());
    const OrvaNetworkLastJoin old = m_node->value().networkLastJoin();
    if (reason != Reason::None && (old.ssid() != ssid || old.reason() != reason))
        LOG4CPLUS_INFO(networkingLogger(),
                       "Not joined: \"" << ssid
                                        << "\": " << OrvaNetworkJoinReason::toString(reason));
    m_node->setValue(OrvaValue::of(join));
}
