// SPDX-License-Identifier: Apache-2.0
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "profile/networkprofilerules.h"
#include "profile/profiles.h"

namespace {

/// The name of the slot in the log and in the translations.
constexpr auto restoreContext = "void Profiles::on_restoreBackup_req(const CMSetDataRequest&)";

OrvaResult<OrvaNetworkProfile> restoreNetworks(const OrvaNetworkProfile& inUse,
                                               const OrvaNetworkProfile& backup)
{
    const OrvaNetworkProfile restored = withNetworksOf(inUse, backup);
    const int known = withNetworkList(inUse).wirelessNetworks().size();
    const qint32 maximum = readValue(OrvaNetworkMaxNumberWifiNetworks()).i32_();
    const bool isFull = maximum > 0 && known >= maximum;
    if (isFull && restored.wirelessNetworks().size() > known)
        return networkingError(restoreContext, "There is no room for the networks that were set "
                                               "aside. Please remove one first.");
    return restored;
}

} // namespace

void Profiles::countAuthFailure()
{
    if (m_authFailureCount < 0 || m_maxAuthFailures <= 0)
        return;
    ++m_authFailureCount;
    LOG4CPLUS_WARN(networkingLogger(), "Failed connection attempts: " << m_authFailureCount
                                                                      << " of " << m_maxAuthFailures
                                                                      << " maximum attempts");
    if (m_authFailureCount == m_maxAuthFailures)
        dropWirelessNetworks();
}

void Profiles::dropWirelessNetworks()
{
    LOG4CPLUS_INFO(networkingLogger(),
                   "Max number of authentication attempts hit, wireless key is wrong!");
    const OrvaValue stored = readValue(OrvaNetworkCurrentProfileSettingsPath());
    // A late error finds the profile emptied, which must not overwrite the backup.
    if (!hasNetwork(stored.networkProfile()))
        return;
    const auto backup = CMReply<QVariant>::create();
    backup.addWatcher(this, [this](const CMReply<QVariant>& reply) {
        if (reply.error().isEmpty()) {
            requestChange(
                [this](const OrvaNetworkProfile& inUse) { return forgetNetworks(inUse); });
            return;
        }
        LOG4CPLUS_ERROR(networkingLogger(),
                        "Keeping the wireless networks, no backup: " << reply.error());
        m_authFailureCount = 0;
    });
    CMRoot()->setValue(OrvaNetworkBackupProfileSettingsPath(),
                       OrvaValue::of(stored.networkProfile()), backup);
}

OrvaResult<OrvaNetworkProfile> Profiles::forgetNetworks(const OrvaNetworkProfile& profile)
{
    if (m_authFailureCount < m_maxAuthFailures) {
        const QString text = QStringLiteral("The wireless networks changed, they stay.");
        LOG4CPLUS_INFO(networkingLogger(), text);
        return CMError::failed(text);
    }
    m_networksDropped = true;
    return withoutNetworks(profile);
}

void Profiles::on_restoreBackup_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), restoreContext);
    const auto backup = readValue(OrvaNetworkBackupProfileSettingsPath()).networkProfile();
    if (!hasNetwork(backup))
        return request.fail(networkingError(restoreContext, "No wireless network was set aside."));
    const auto restored = requestChange(
        [backup](const OrvaNetworkProfile& inUse) { return restoreNetworks(inUse, backup); });
    request.answerAs(restored);
}
