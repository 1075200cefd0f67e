// SPDX-License-Identifier: Apache-2.0
#include "profile/profiles.h"

#include "backend/networkinglowlevel.h"
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "picture/picture.h"
#include "profile/networkprofilerules.h"

#include <utility>

namespace {

using Profile = OrvaNetworkProfile;

// The names of the slots in the log and in the translations.
constexpr auto setProfileContext =
    "void Networking::on_setNetworkProfile_req(const CMSetDataRequest&)";
constexpr auto removeNetworkContext =
    "void Networking::on_removeWirelessNetwork_req(const CMSetDataRequest&)";

/// The stored profile; the one before, where an end of the host has left it on trial.
Profile storedProfile()
{
    const Profile before = ProfileTrial::leftOver();
    return before == Profile() ? readValue(OrvaNetworkCurrentProfileSettingsPath()).networkProfile()
                               : before;
}

OrvaResult<Profile> forgetNetwork(const Profile& profile, const QString& ssid)
{
    const Profile left = withoutNetwork(profile, ssid);
    if (left.wirelessNetworks().size() == profile.wirelessNetworks().size())
        return networkingError(removeNetworkContext, "Network is not configured");
    return left;
}

} // namespace

Profiles::Profiles(const CMNodes& nodes, Networking_LowLevel& backend, Picture& picture,
                   const NetworkingLife& life)
    : m_lowlevel(backend)
    , m_picture(picture)
    , m_life(life)
    , m_profileNode(valueNode(nodes, OrvaNetworkProfilePath()))
    , m_trial(nodes)
    , m_maxAuthFailures(readValue(OrvaNetworkMaxAuthFailuresSettingsPath()).i32_())
{
    const Profile stored = storedProfile();
    m_profileNode->setValue(OrvaValue::of(hidePassword(stored)));
    connect(&m_trial, &ProfileTrial::expired, this, [this] {
        LOG4CPLUS_INFO(networkingLogger(), "The profile was not confirmed in time");
        take(ProfileTrial::expiry());
    });
    if (ProfileTrial::leftOver() == Profile())
        return;
    LOG4CPLUS_INFO(networkingLogger(),
                   "The profile was not confirmed before the host ended, the one before is back");
    ProfileTrial::forget();
    CMRoot()->setValue(OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(stored),
                       CMReply<QVariant>::create());
}

Configured Profiles::configured() const
{
    if (!m_life.isConfigured())
        return {};
    return {isWiredConfigured(m_profile), isWirelessConfigured(m_profile)};
}

void Profiles::start()
{
    // A profile that is still being stored, or is on trial, is in use.
    const bool isStored = m_requests.isEmpty() && !m_trial.isRunning();
    const Profile stored = isStored ? storedProfile() : m_profile;
    LOG4CPLUS_DEBUG(networkingLogger(), "Initializing connection, profile: " << stored);
    const Profile before = m_profile;
    applyProfile(withNetworkList(stored));
    Q_EMIT profileApplied(m_profile, before);
    adoptProfile();
}

void Profiles::on_setNetworkProfile_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), setProfileContext);
    LOG4CPLUS_INFO(networkingLogger(), "Received Network Profile Request");
    take(request);
}

void Profiles::take(const CMSetDataRequest& request)
{
    m_requests.enqueue(request);
    if (m_requests.size() == 1)
        startNextRequest();
}

void Profiles::startNextRequest()
{
    const auto starts = [this](const CMSetDataRequest& request) {
        return ProfileTrial::isEndedBy(request) ? endTrial(request) : setProfile(request);
    };
    while (!m_requests.isEmpty() && !starts(m_requests.head()))
        m_requests.dequeue();
}

bool Profiles::setProfile(const CMSetDataRequest& request)
{
    const auto requested = requestedProfile(request);
    if (!requested) {
        request.fail(requested.error());
        return false;
    }
    const qint32 maximum = readValue(OrvaNetworkMaxNumberWifiNetworks()).i32_();
    const Profile before = m_profile;
    const Profile merged = computeNewNetworkProfile(*requested, before, maximum);
    LOG4CPLUS_INFO(networkingLogger(), "Profile data changed. Loading...");
    applyProfile(merged);
    if (!m_trial.isRunning() && ProfileTrial::isAskedBy(request))
        ProfileTrial::keep(before);
    else if (!m_trial.isRunning())
        ProfileTrial::forget();
    store(before);
    adoptProfile();
    return true;
}

OrvaResult<Profile> Profiles::requestedProfile(const CMSetDataRequest& request) const
{
    if (!m_life.isStarted()) {
        LOG4CPLUS_WARN(networkingLogger(), "Networking isn't started yet, can't set a profile!");
        return networkingError(setProfileContext, "Networking is not started.");
    }
    const auto timely =
        ProfileTrial::isAskedBy(request) ? ProfileTrial::check(request) : OrvaResult<void>();
    if (!timely)
        return timely.error();
    const Change change = m_changes.value(request.reply().data());
    const auto profile = change ? change(m_profile) : extractNetworkProfile(request);
    if (!profile)
        return profile;
    LOG4CPLUS_INFO(networkingLogger(), "New profile: " << *profile);
    const auto verified = verifyProfile(*profile);
    return verified ? profile : verified.error();
}

Profile Profiles::unhidePassword(const Profile& profile) const
{
    return restorePassword(profile, m_profile);
}

Profile Profiles::extractNetworkProfile(const CMSetDataRequest& request) const
{
    const OrvaValue& value = request.value();
    return unhidePassword(ProfileTrial::isAskedBy(request) ? value.networkProfileTrial().profile()
                                                           : value.networkProfile());
}

bool Profiles::applyProfile(const Profile& profile)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(networkingLogger(),
                   "Applying profile: type: " << OrvaNetworkProfileType::toString(profile.type())
                                              << " data: " << profile);
    // The profile in use is set first: reports of the backend inside the call are judged by it.
    m_profile = profile;
    publishKnownNetworks();
    Q_EMIT applying();
    if (!m_lowlevel.applyProfile(profile)) {
        LOG4CPLUS_ERROR(networkingLogger(), "Unable to apply profile!");
        return false;
    }
    return true;
}

void Profiles::publishKnownNetworks()
{
    const OrvaNetworkState wired = m_picture.info().wired().state();
    const bool hasWireless = !m_profile.wireless().ssid().isEmpty();
    const bool connects = hasWireless && wired != OrvaNetworkState::Connected;
    if (hasWireless)
        Q_EMIT wifiNeeded(true);
    if (connects)
        LOG4CPLUS_INFO(networkingLogger(),
                       "Applying wireless profile, wired: " << OrvaNetworkState::toString(wired));
    else if (hasWireless)
        LOG4CPLUS_INFO(networkingLogger(), "Not applying wireless profile, wired is connected");
    m_picture.edit([&](OrvaNetworkInfo& info) {
        info = withUnconfiguredIdle(info, configured());
        info.setWirelessNetworks(knownNetworks(m_profile));
        if (connects)
            info =
                withConnectingStatus(withoutWpsSession(info), m_picture.isLinkUp(), configured());
    });
}

void Profiles::adoptProfile()
{
    m_profileNode->setValue(OrvaValue::of(hidePassword(m_profile)));
    m_authFailureCount = 0;
}

CMReply<QVariant> Profiles::requestChange(const Change& change)
{
    const auto reply = CMReply<QVariant>::create();
    const CMReplyData* const key = reply.data();
    m_changes.insert(key, change);
    reply.addWatcher(
        this, [this, key](const CMReply<QVariant>&) { m_changes.remove(key); },
        Qt::DirectConnection);
    CMRoot()->invoke(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(Profile()), reply);
    return reply;
}

void Profiles::on_removeWirelessNetwork_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), removeNetworkContext);
    const QString ssid = request.value().string_();
    LOG4CPLUS_INFO(networkingLogger(), "ssid: " << ssid);
    const auto known = forgetNetwork(m_profileNode->value().networkProfile(), ssid);
    // A profile that still waits, or a change on its way, may bring the network.
    if (!known && m_requests.isEmpty() && m_changes.isEmpty())
        return request.fail(known.error());
    const auto removed =
        requestChange([ssid](const Profile& inUse) { return forgetNetwork(inUse, ssid); });
    request.answerAs(removed);
}
