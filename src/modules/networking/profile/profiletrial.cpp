// SPDX-License-Identifier: Apache-2.0
#include "profile/profiletrial.h"

#include "monotonicclock.h"
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "nodelookup.h"
#include "profile/networkprofilerules.h"

namespace {

constexpr qint32 shortestMs = 1000;
constexpr qint32 longestMs = 24 * 60 * 60 * 1000;

qint32 timeOf(const CMSetDataRequest& request)
{
    return request.value().networkProfileTrial().confirmWithinMs();
}

void writeLeftOver(const OrvaNetworkProfile& profile)
{
    CMRoot()->setValue(OrvaNetworkRollbackProfileSettingsPath(), OrvaValue::of(profile),
                       CMReply<QVariant>::create());
}

} // namespace

ProfileTrial::ProfileTrial(const CMNodes& nodes)
    : m_node(valueNode(nodes, OrvaNetworkPendingProfilePath()))
{
    m_node->setValue(OrvaValue::of(OrvaNetworkPendingProfile()));
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ProfileTrial::expired);
}

bool ProfileTrial::isAskedBy(const CMSetDataRequest& request)
{
    return request.path() == OrvaNetworkTryNetworkProfilePath();
}

bool ProfileTrial::isConfirmedBy(const CMSetDataRequest& request)
{
    return request.path() == OrvaNetworkConfirmProfilePath();
}

bool ProfileTrial::isRolledBackBy(const CMSetDataRequest& request)
{
    return request.path() == OrvaNetworkRollbackProfilePath();
}

bool ProfileTrial::isExpiredBy(const CMSetDataRequest& request)
{
    return request.path() == OrvaNetworkPendingProfilePath();
}

CMSetDataRequest ProfileTrial::expiry()
{
    return {OrvaNetworkPendingProfilePath(), OrvaRoles::Activate(), OrvaValue()};
}

OrvaResult<void> ProfileTrial::check(const CMSetDataRequest& request)
{
    const qint32 time = timeOf(request);
    if (time >= shortestMs && time <= longestMs)
        return {};
    return networkingError("OrvaResult<void> ProfileTrial::check(const CMSetDataRequest&)",
                           "A trial lasts 1 second to 24 hours.");
}

OrvaNetworkProfile ProfileTrial::leftOver()
{
    return readValue(OrvaNetworkRollbackProfileSettingsPath()).networkProfile();
}

void ProfileTrial::keep(const OrvaNetworkProfile& before)
{
    // An empty profile stands for none.
    OrvaNetworkProfile named = before;
    named.setType(before.type());
    writeLeftOver(named);
}

void ProfileTrial::forget()
{
    if (leftOver() != OrvaNetworkProfile())
        writeLeftOver(OrvaNetworkProfile());
}

void ProfileTrial::begin(const CMSetDataRequest& request, const OrvaNetworkProfile& before)
{
    if (!m_before)
        m_before = before;
    m_timer.start(timeOf(request));
    OrvaNetworkPendingProfile pending;
    pending.setBefore(hidePassword(*m_before));
    pending.setUntilMs(monotonicMs() + timeOf(request));
    m_node->setValue(OrvaValue::of(pending));
}

void ProfileTrial::end()
{
    m_before.reset();
    m_timer.stop();
    m_node->setValue(OrvaValue::of(OrvaNetworkPendingProfile()));
}
