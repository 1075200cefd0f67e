#include "network/networkpaths.h"
#include "networking.h"
#include "networkinglog.h"
#include "softap/softapactivation.h"

#include <utility>

namespace {

/// How long a device without any network configured waits for one.
constexpr unsigned int unconfiguredDelaySeconds = 10;

OrvaNetworkProfileSoftApRequest requestOf(const QString& name)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(name);
    return request;
}

bool wirelessChanged(const OrvaNetworkProfile& newProfile, const OrvaNetworkProfile& oldProfile)
{
    return newProfile.type() != OrvaNetworkProfileType::Wired &&
           (newProfile.wireless() != oldProfile.wireless() ||
            oldProfile.type() == OrvaNetworkProfileType::Wired);
}

} // namespace

void Networking::activateLocalSoftAp()
{
    // Not before networking is started: the request would be refused, and the next start would find
    // the soft AP marked as active and leave it alone.
    m_localSoftApActive = m_started;
    if (!m_softApAutoEnabled)
        return;
    m_softAps->on_requestSoftAp_req(
        softApActivation(OrvaNetworkRequestSoftApPath(), requestOf(name())));
}

void Networking::deactivateLocalSoftAp()
{
    m_localSoftApActive = false;
    if (!m_softApAutoEnabled)
        return;
    m_softAps->on_revokeSoftAp_req(
        softApActivation(OrvaNetworkRevokeSoftApPath(), requestOf(name())));
}

void Networking::startSoftApTimer()
{
    LOG4CPLUS_INFO(networkingLogger(), "Starting softap timer");
    m_softApTimer.start(OrvaNetworkSoftApTimeout());
}

void Networking::startSoftApTimer(unsigned int seconds)
{
    LOG4CPLUS_INFO(networkingLogger(),
                   "Starting softap timer with custom timeout: " << seconds << " seconds");
    m_softApTimer.start(static_cast<int>(seconds) * 1000);
}

void Networking::stopSoftApTimer()
{
    if (m_softApTimer.isActive())
        LOG4CPLUS_INFO(networkingLogger(), "Stopping softap timer.");
    m_softApTimer.stop();
}

void Networking::on_softApTimer_timeout()
{
    LOG4CPLUS_INFO(networkingLogger(), "activating local soft ap");
    activateLocalSoftAp();
}

void Networking::restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                                    const OrvaNetworkProfile& oldProfile)
{
    LOG4CPLUS_TRACE(networkingLogger(), "new: " << newProfile << " old: " << oldProfile);
    if (m_configured.wireless && wirelessChanged(newProfile, oldProfile))
        deactivateLocalSoftAp();
    const bool fallback = std::exchange(m_authFailureFallback, false);
    if (m_localSoftApActive)
        return;
    if (currentCableStatus() || m_configured.wireless) {
        if (!linkStatus())
            startSoftApTimer();
        return;
    }
    if (fallback) {
        LOG4CPLUS_INFO(networkingLogger(),
                       "No network configured, immediate softAP start requested...");
        startSoftApTimer(0);
    } else {
        LOG4CPLUS_INFO(networkingLogger(),
                       "No network configured, starting softAP in 10 seconds...");
        startSoftApTimer(unconfiguredDelaySeconds);
    }
}
