// SPDX-License-Identifier: Apache-2.0
#include "softap/localsoftap.h"

#include "network/networkpaths.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "picture/picture.h"
#include "softap/softapactivation.h"

#include <utility>

namespace {

/// The time for which a device without any network configured waits for one.
constexpr unsigned int unconfiguredDelaySeconds = 10;

OrvaNetworkProfileSoftApRequest requestOf(const QString& name)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(name);
    return request;
}

/// True if a profile that asks for a wireless network asks for another one than the profile before.
bool wirelessChanged(const OrvaNetworkProfile& newProfile, const OrvaNetworkProfile& oldProfile)
{
    return newProfile.wireless() != oldProfile.wireless() ||
           oldProfile.type() == OrvaNetworkProfileType::Wired;
}

} // namespace

LocalSoftAp::LocalSoftAp(SoftAps& softAps, Networking_LowLevel& backend, const Picture& picture,
                         const NetworkingLife& life, QObject* parent)
    : QObject(parent)
    , m_softAps(softAps)
    , m_lowlevel(backend)
    , m_picture(picture)
    , m_life(life)
{
    m_softApTimer.setSingleShot(true);
    connect(&m_softApTimer, &QTimer::timeout, this, &LocalSoftAp::on_softApTimer_timeout);
}

void LocalSoftAp::readSoftApAutoEnabled()
{
    if (!m_lowlevel.hasWireless()) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "No wireless interface on the system, disabling softap mode");
        return;
    }
    LOG4CPLUS_DEBUG(networkingLogger(), "There is a wireless interface on the system");
    m_softApAutoEnabled = readValue(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_();
}

void LocalSoftAp::restoreLocalSoftAp()
{
    // The wireless interface may have been missing at the start; a status alone is no proof of it.
    if (m_softApAutoEnabled || !readValue(OrvaNetworkSoftApAutoEnabledSettingsPath()).bool_() ||
        !m_lowlevel.hasWireless())
        return;
    m_softApAutoEnabled = true;
    if (m_localSoftApActive)
        activateLocalSoftAp();
}

void LocalSoftAp::activateLocalSoftAp()
{
    // Not before networking is started: the request would be refused, and the next start would find
    // the soft AP marked as active and leave it alone.
    m_localSoftApActive = m_life.isStarted();
    if (!m_softApAutoEnabled)
        return;
    m_softAps.on_requestSoftAp_req(
        softApActivation(OrvaNetworkRequestSoftApPath(), requestOf(m_softAps.ownName())));
}

void LocalSoftAp::deactivateLocalSoftAp()
{
    m_localSoftApActive = false;
    if (!m_softApAutoEnabled)
        return;
    m_softAps.on_revokeSoftAp_req(
        softApActivation(OrvaNetworkRevokeSoftApPath(), requestOf(m_softAps.ownName())));
}

void LocalSoftAp::startSoftApTimer()
{
    LOG4CPLUS_INFO(networkingLogger(), "Starting softap timer");
    m_softApTimer.start(OrvaNetworkSoftApTimeout());
}

void LocalSoftAp::startSoftApTimer(unsigned int seconds)
{
    LOG4CPLUS_INFO(networkingLogger(),
                   "Starting softap timer with custom timeout: " << seconds << " seconds");
    m_softApTimer.start(static_cast<int>(seconds) * 1000);
}

void LocalSoftAp::stopSoftApTimer()
{
    if (m_softApTimer.isActive())
        LOG4CPLUS_INFO(networkingLogger(), "Stopping softap timer.");
    m_softApTimer.stop();
}

void LocalSoftAp::on_softApTimer_timeout()
{
    LOG4CPLUS_INFO(networkingLogger(), "activating local soft ap");
    Q_EMIT waitedInVain();
    activateLocalSoftAp();
}

void LocalSoftAp::restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                                     const OrvaNetworkProfile& oldProfile, bool wirelessConfigured)
{
    LOG4CPLUS_TRACE(networkingLogger(), "new: " << newProfile << " old: " << oldProfile);
    if (wirelessConfigured && wirelessChanged(newProfile, oldProfile))
        deactivateLocalSoftAp();
    const bool fallback = std::exchange(m_authFailureFallback, false);
    if (m_localSoftApActive)
        return;
    if (m_picture.currentCableStatus() || wirelessConfigured) {
        if (!m_picture.linkStatus())
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
