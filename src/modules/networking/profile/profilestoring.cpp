// SPDX-License-Identifier: Apache-2.0
// A profile on its way to the disk, and what follows.
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "picture/picture.h"
#include "profile/networkprofilerules.h"
#include "profile/profiles.h"

#include <utility>

namespace {

using Profile = OrvaNetworkProfile;

/// The name of the slot in the log and in the translations.
constexpr auto endTrialContext = "void Profiles::on_endTrial_req(const CMSetDataRequest&)";

} // namespace

void Profiles::on_endTrial_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), endTrialContext);
    take(request);
}

bool Profiles::endTrial(const CMSetDataRequest& request)
{
    if (!m_trial.isRunning()) {
        request.fail(networkingError(endTrialContext, "No profile is on trial."));
        return false;
    }
    if (ProfileTrial::isExpiredBy(request) && m_trial.isInTime()) {
        LOG4CPLUS_INFO(networkingLogger(), "A second trial was stored meanwhile, it goes on");
        return false;
    }
    const Profile before = m_profile;
    if (!ProfileTrial::isConfirmedBy(request)) {
        LOG4CPLUS_INFO(networkingLogger(), "Going back to the profile before the trial");
        goBackTo(m_trial.before());
    }
    ProfileTrial::forget();
    store(before);
    return true;
}

void Profiles::store(const Profile& before)
{
    const auto stored = CMReply<QVariant>::create();
    stored.addWatcher(
        this,
        [this, before](const CMReply<QVariant>& reply) { profileStored(before, reply.error()); },
        Qt::QueuedConnection);
    CMRoot()->setValue(OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(m_profile), stored);
}

void Profiles::profileStored(const Profile& before, const CMError& error)
{
    const CMSetDataRequest request = m_requests.dequeue();
    if (error.isEmpty()) {
        settle(request, before);
        request.answer();
    } else {
        giveUp(request, before);
        request.fail(error);
    }
    startNextRequest();
}

void Profiles::settle(const CMSetDataRequest& request, const Profile& before)
{
    // A profile that is refused neither puts the local soft AP off nor brings it sooner.
    if (std::exchange(m_networksDropped, false))
        Q_EMIT wirelessNetworksDropped();
    if (m_life.isStarted() && !ProfileTrial::isConfirmedBy(request))
        Q_EMIT profileApplied(m_profile, before);
    if (ProfileTrial::isAskedBy(request))
        m_trial.begin(request, before);
    else if (ProfileTrial::isEndedBy(request))
        m_trial.end();
}

void Profiles::giveUp(const CMSetDataRequest& request, const Profile& before)
{
    m_networksDropped = false;
    if (ProfileTrial::isConfirmedBy(request))
        return;
    if (ProfileTrial::isEndedBy(request)) {
        LOG4CPLUS_WARN(networkingLogger(), "The profile could not be stored, it is in use");
        if (m_life.isStarted())
            Q_EMIT profileApplied(m_profile, before);
        return m_trial.end();
    }
    LOG4CPLUS_WARN(networkingLogger(),
                   "The profile could not be stored, going back to the one before");
    if (ProfileTrial::isAskedBy(request) && !m_trial.isRunning())
        ProfileTrial::forget(); // it may be stored by itself
    goBackTo(before);
}

void Profiles::goBackTo(const Profile& profile)
{
    if (m_life.isStarted()) {
        if (profile.wireless().ssid().isEmpty())
            Q_EMIT wifiNeeded(false);
        applyProfile(profile);
    } else {
        m_profile = profile;
        m_picture.edit(
            [&](OrvaNetworkInfo& info) { info.setWirelessNetworks(knownNetworks(profile)); });
    }
    adoptProfile();
}
