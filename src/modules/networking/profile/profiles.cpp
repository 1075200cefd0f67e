#include "answeras.h"
#include "network/networkpaths.h"
#include "networking.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "picture/networkinforules.h"
#include "profile/networkprofilerules.h"

namespace {

constexpr auto setProfileContext =
    "void Networking::on_setNetworkProfile_req(const CMSetDataRequest&)";
constexpr auto removeNetworkContext =
    "void Networking::on_removeWirelessNetwork_req(const CMSetDataRequest&)";

CMError forgetNetwork(OrvaNetworkProfile& profile, const QString& ssid)
{
    const int known = profile.wirelessNetworks().size();
    profile = withoutNetwork(profile, ssid);
    return profile.wirelessNetworks().size() < known
               ? CMError()
               : networkingError(removeNetworkContext, "Network is not configured");
}

} // namespace

void Networking::on_setNetworkProfile_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(networkingLogger(), "Received Network Profile Request");
    m_profileRequests.enqueue(request);
    // One at a time: where the disk refuses a profile the one before holds, and none is built on
    // it.
    if (m_profileRequests.size() == 1)
        setNextProfile();
}

void Networking::setNextProfile()
{
    while (!m_profileRequests.isEmpty() && !setProfile(m_profileRequests.head()))
        m_profileRequests.dequeue();
}

bool Networking::setProfile(const CMSetDataRequest& request)
{
    OrvaNetworkProfile profile;
    const CMError error = requestedProfile(request, profile);
    if (!error.isEmpty()) {
        request.fail(error);
        return false;
    }
    const qint32 maximum = readValue(OrvaNetworkMaxNumberWifiNetworks()).i32_();
    const OrvaNetworkProfile before = m_profile;
    const OrvaNetworkProfile merged = computeNewNetworkProfile(profile, before, maximum);
    LOG4CPLUS_INFO(networkingLogger(), "Profile data changed. Loading...");
    applyProfile(merged);
    restartSoftApTimer(merged, before);
    const auto stored = CMReply<QVariant>::create();
    stored.addWatcher(
        this,
        [this, before](const CMReply<QVariant>& reply) { profileStored(before, reply.error()); },
        Qt::QueuedConnection);
    CMRoot()->setValue(OrvaNetworkCurrentProfileSettingsPath(), toValue(merged), stored);
    adoptProfile(merged);
    return true;
}

CMError Networking::requestedProfile(const CMSetDataRequest& request,
                                     OrvaNetworkProfile& profile) const
{
    if (!m_started) {
        LOG4CPLUS_WARN(networkingLogger(), "Networking isn't started yet, can't set a profile!");
        return networkingError(setProfileContext, "Networking is not started.");
    }
    if (const auto change = m_profileChanges.value(request.reply().data())) {
        profile = m_profile;
        const CMError error = change(profile);
        if (!error.isEmpty())
            return error;
    } else {
        profile = extractNetworkProfile(request);
    }
    LOG4CPLUS_INFO(networkingLogger(), "New profile: " << profile);
    const QString why = verifyProfile(profile);
    return why.isEmpty() ? CMError() : CMError(QStringLiteral("error"), why);
}

void Networking::profileStored(const OrvaNetworkProfile& before, const CMError& error)
{
    const CMSetDataRequest request = m_profileRequests.dequeue();
    if (error.isEmpty()) {
        request.answer();
    } else {
        restoreProfile(before);
        request.fail(error);
    }
    setNextProfile();
}

void Networking::restoreProfile(const OrvaNetworkProfile& before)
{
    LOG4CPLUS_WARN(networkingLogger(),
                   "The profile could not be stored, going back to the one before");
    if (m_started)
        return useProfile(before);
    m_picture.edit([&](OrvaNetworkInfo& info) { info.setWirelessNetworks(knownNetworks(before)); });
    adoptProfile(before);
}

void Networking::useProfile(const OrvaNetworkProfile& profile)
{
    applyProfile(profile);
    restartSoftApTimer(profile, m_profile);
    adoptProfile(profile);
}

void Networking::adoptProfile(const OrvaNetworkProfile& profile)
{
    m_profileNode->setValue(toValue(hidePassword(profile)));
    m_authFailureCount = 0;
    m_profile = profile;
}

CMReply<QVariant> Networking::requestProfileChange(const ProfileChange& change)
{
    const auto reply = CMReply<QVariant>::create();
    const CMReplyData* const key = reply.data();
    m_profileChanges.insert(key, change);
    reply.addWatcher(
        this, [this, key](const CMReply<QVariant>&) { m_profileChanges.remove(key); },
        Qt::DirectConnection);
    CMRoot()->invoke(OrvaNetworkSetNetworkProfilePath(), toValue(OrvaNetworkProfile()), reply);
    return reply;
}

void Networking::on_removeWirelessNetwork_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const QString ssid = request.value().string_();
    LOG4CPLUS_INFO(networkingLogger(), "ssid: " << ssid);
    OrvaNetworkProfile published = m_profileNode->value().networkProfile();
    const CMError error = forgetNetwork(published, ssid);
    // A profile that still waits, or a change on its way, may bring the network.
    if (!error.isEmpty() && m_profileRequests.isEmpty() && m_profileChanges.isEmpty())
        return request.fail(error);
    const auto removed = requestProfileChange(
        [ssid](OrvaNetworkProfile& profile) { return forgetNetwork(profile, ssid); });
    answerAs(removed, request);
}

OrvaNetworkProfile Networking::unhidePassword(const OrvaNetworkProfile& profile) const
{
    return restorePassword(profile, m_profile);
}

OrvaNetworkProfile Networking::extractNetworkProfile(const CMSetDataRequest& request) const
{
    return unhidePassword(request.value().networkProfile());
}

bool Networking::applyProfile(const OrvaNetworkProfile& profile)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(networkingLogger(),
                   "Applying profile: type: " << OrvaNetworkProfileType::toString(profile.type())
                                              << " data: " << profile);
    m_configured = {isWiredConfigured(profile), isWirelessConfigured(profile)};
    publishKnownNetworks(profile);
    if (!m_lowlevel->applyProfile(profile)) {
        LOG4CPLUS_ERROR(networkingLogger(), "Unable to apply profile!");
        return false;
    }
    return true;
}

void Networking::publishKnownNetworks(const OrvaNetworkProfile& profile)
{
    OrvaNetworkInfo updated = withUnconfiguredIdle(info(), m_configured);
    updated.setWirelessNetworks(knownNetworks(profile));
    if (profile.wireless().ssid().isEmpty())
        return publishInfo(updated);

    m_wifiResource.requestWifiResource(WifiResource::WirelessConnection, true);
    const OrvaNetworkState wired = updated.wired().state();
    if (wired == OrvaNetworkState::Connected) {
        LOG4CPLUS_INFO(networkingLogger(), "Not applying wireless profile, wired is connected");
    } else {
        LOG4CPLUS_INFO(networkingLogger(),
                       "Applying wireless profile, wired: " << OrvaNetworkState::toString(wired));
        updated =
            withConnectingStatus(withoutWpsSession(updated), m_picture.isLinkUp(), m_configured);
    }
    publishInfo(updated);
}

void Networking::dropWirelessNetworks()
{
    LOG4CPLUS_INFO(networkingLogger(),
                   "Max number of authentication attempts hit, wireless key is wrong!");
    const OrvaNetworkProfile stored =
        readValue(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
    // A late error finds the profile emptied, which must not overwrite the backup.
    if (!hasNetwork(stored))
        return;
    const auto backup = CMReply<QVariant>::create();
    backup.addWatcher(this, [this](const CMReply<QVariant>& reply) {
        if (reply.error().isEmpty()) {
            requestProfileChange(
                [this](OrvaNetworkProfile& profile) { return forgetNetworks(profile); });
            return;
        }
        LOG4CPLUS_ERROR(networkingLogger(),
                        "Keeping the wireless networks, no backup: " << reply.error());
        m_authFailureCount = 0;
    });
    CMRoot()->setValue(OrvaNetworkBackupProfileSettingsPath(), toValue(stored), backup);
}

CMError Networking::forgetNetworks(OrvaNetworkProfile& profile)
{
    if (m_authFailureCount < m_maxAuthFailures) {
        const QString text = QStringLiteral("The wireless networks changed, they stay.");
        LOG4CPLUS_INFO(networkingLogger(), text);
        return CMError(QStringLiteral("error"), text);
    }
    m_localSoftAp.setAuthFailureFallback();
    profile = withoutNetworks(profile);
    return CMError();
}
