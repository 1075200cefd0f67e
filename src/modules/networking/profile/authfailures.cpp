// SPDX-License-Identifier: Apache-2.0
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "profile/networkprofilerules.h"
#include "profile/profiles.h"

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
        return CMError(QStringLiteral("error"), text);
    }
    m_networksDropped = true;
    return withoutNetworks(profile);
}
