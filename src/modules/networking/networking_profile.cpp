#include "network/networkpaths.h"
#include "networkInfoRules.h"
#include "networkProfileRules.h"
#include "networking.h"
#include "networking_error.h"
#include "networking_log.h"
#include "nodeValues.h"

void Networking::on_setNetworkProfile_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(networkingLogger(), "Received Network Profile Request");
    if (!m_started) {
        LOG4CPLUS_WARN(networkingLogger(), "Networking isn't started yet, can't set a profile!");
        return request.fail(
            CMError(QStringLiteral("error"),
                    TrString(trExtractContext(Q_FUNC_INFO), "Networking is not started.")));
    }
    const OrvaNetworkProfile profile = extractNetworkProfile(request);
    LOG4CPLUS_INFO(networkingLogger(), "New profile: " << profile);
    const QString why = verifyProfile(profile);
    if (!why.isEmpty())
        return request.fail(CMError(QStringLiteral("error"), why));

    const qint32 maximum = readValue(OrvaNetworkMaxNumberWifiNetworks()).i32_();
    const OrvaNetworkProfile merged = computeNewNetworkProfile(profile, m_profile, maximum);
    LOG4CPLUS_INFO(networkingLogger(), "Profile data changed. Loading...");
    applyProfile(merged);
    restartSoftApTimer(merged, m_profile);
    const auto stored = CMReply<QVariant>::create();
    CMRoot()->setValue(OrvaNetworkCurrentProfileSettingsPath(), toValue(merged), stored);
    m_profileNode->setValue(toValue(hidePassword(merged)));
    m_authFailureCount = 0;
    m_profile = merged;
    // The profile is in use by now; whoever set it must still hear that a restart will not find it.
    if (stored.error().isEmpty())
        request.answer();
    else
        request.fail(stored.error());
}

void Networking::on_removeWirelessNetwork_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(networkingLogger(), "ssid: " << request.value().string_());
    m_pendingRemovals.enqueue(request);
    if (m_pendingRemovals.size() == 1)
        removeNextNetwork();
}

void Networking::removeNextNetwork()
{
    while (!m_pendingRemovals.isEmpty() && !removeNetwork(m_pendingRemovals.head()))
        m_pendingRemovals.dequeue();
}

bool Networking::removeNetwork(const CMSetDataRequest& request)
{
    const OrvaNetworkProfile published = m_profileNode->value().networkProfile();
    const OrvaNetworkProfile shortened = withoutNetwork(published, request.value().string_());
    if (shortened.wirelessNetworks().size() == published.wirelessNetworks().size()) {
        constexpr auto context =
            "void Networking::on_removeWirelessNetwork_req(const CMSetDataRequest&)";
        request.fail(networkingError(context, "Network is not configured"));
        return false;
    }
    const auto reply = CMReply<QVariant>::create();
    reply.addWatcher(
        this,
        [this](const CMReply<QVariant>& finished) {
            const CMSetDataRequest done = m_pendingRemovals.dequeue();
            removeNextNetwork();
            if (finished.error().isEmpty())
                done.answer();
            else
                done.fail(finished.error());
        },
        Qt::QueuedConnection);
    CMRoot()->invoke(OrvaNetworkSetNetworkProfilePath(), toValue(unhidePassword(shortened)), reply);
    return true;
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
    m_wirelessConfigured = isWirelessConfigured(profile);
    m_wiredConfigured = isWiredConfigured(profile);
    publishKnownNetworks(profile);
    if (!m_lowlevel->applyProfile(profile)) {
        LOG4CPLUS_ERROR(networkingLogger(), "Unable to apply profile!");
        return false;
    }
    return true;
}

void Networking::publishKnownNetworks(const OrvaNetworkProfile& profile)
{
    OrvaNetworkInfo updated = info();
    updated.setWirelessNetworks(knownNetworks(profile));
    if (profile.wireless().ssid().isEmpty())
        return publishInfo(updated);

    const OrvaNetworkState wired = updated.wired().state();
    if (wired == OrvaNetworkState::Connected) {
        LOG4CPLUS_INFO(networkingLogger(), "Not applying wireless profile, wired is connected");
    } else {
        LOG4CPLUS_INFO(networkingLogger(),
                       "Applying wireless profile, wired: " << OrvaNetworkState::toString(wired));
        updated = withConnectingStatus(withoutWpsSession(updated), !m_linksUp.isEmpty(),
                                       m_wiredConfigured, m_wirelessConfigured);
    }
    requestWifiResource(WirelessConnection, true);
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
    CMRoot()->setValue(OrvaNetworkBackupProfileSettingsPath(), toValue(stored),
                       CMReply<QVariant>::create());
    m_authFailureFallback = true;
    CMRoot()->invoke(OrvaNetworkSetNetworkProfilePath(), toValue(withoutNetworks(stored)),
                     CMReply<QVariant>::create());
}
