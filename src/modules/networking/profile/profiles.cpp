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

Profile storedProfile()
{
    return readValue(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
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
    , m_maxAuthFailures(readValue(OrvaNetworkMaxAuthFailuresSettingsPath()).i32_())
{
    m_profileNode->setValue(OrvaValue::of(hidePassword(storedProfile())));
}

Configured Profiles::configured() const
{
    if (!m_life.isConfigured())
        return {};
    return {isWiredConfigured(m_profile), isWirelessConfigured(m_profile)};
}

void Profiles::start()
{
    // A profile that is still being stored is in use.
    const Profile stored = m_requests.isEmpty() ? storedProfile() : m_profile;
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
    m_requests.enqueue(request);
    if (m_requests.size() == 1)
        setNextProfile();
}

void Profiles::setNextProfile()
{
    while (!m_requests.isEmpty() && !setProfile(m_requests.head()))
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
    return unhidePassword(request.value().networkProfile());
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
    const bool dropped = std::exchange(m_networksDropped, false);
    if (error.isEmpty()) {
        // One that is refused neither puts the local soft AP off nor brings it sooner.
        if (dropped)
            Q_EMIT wirelessNetworksDropped();
        if (m_life.isStarted())
            Q_EMIT profileApplied(m_profile, before);
        request.answer();
    } else {
        restoreProfile(before);
        request.fail(error);
    }
    setNextProfile();
}

void Profiles::restoreProfile(const Profile& before)
{
    LOG4CPLUS_WARN(networkingLogger(),
                   "The profile could not be stored, going back to the one before");
    if (m_life.isStarted()) {
        if (before.wireless().ssid().isEmpty())
            Q_EMIT wifiNeeded(false);
        applyProfile(before);
    } else {
        m_profile = before;
        m_picture.edit(
            [&](OrvaNetworkInfo& info) { info.setWirelessNetworks(knownNetworks(before)); });
    }
    adoptProfile();
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
    removed.addWatcher([request](const CMReply<QVariant>& ended) { request.answerAs(ended); });
}
