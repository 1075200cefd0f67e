// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"
#include "softap/softaps.h"

#include <QTimer>

class Picture;

/// The device's own soft access point, by which it is set up: started when no network is there for
/// a while, gone when one is.
class LocalSoftAp : public QObject
{
    Q_OBJECT
public:
    /// Asks and revokes at `softAps`, in the device's own name. All must outlive this object.
    LocalSoftAp(SoftAps& softAps, Networking_LowLevel& backend, const Picture& picture,
                const NetworkingLife& life, QObject* parent);

    /// Reads whether the device may have an access point of its own. Without a wireless interface
    /// it may not.
    void readSoftApAutoEnabled();
    /// The wireless interface told its status. The first time that it is there, the access point
    /// that was missed for want of it is started.
    void restoreLocalSoftAp();

    /// Asks for the access point, once networking is started.
    void activateLocalSoftAp();
    /// Revokes it.
    void deactivateLocalSoftAp();

    /// Starts the access point after the usual delay.
    void startSoftApTimer();
    /// The same after a delay of one's own.
    void startSoftApTimer(unsigned int seconds);
    void stopSoftApTimer();
    /// A profile was applied in the place of another, or the last link went. Stops the access point
    /// where another wireless network is to be joined, and starts the timer that fits.
    void restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                            const OrvaNetworkProfile& oldProfile, bool wirelessConfigured);
    /// Wrong keys have emptied the profile: the timer is next started without a delay.
    void setAuthFailureFallback() { m_authFailureFallback = true; }

public Q_SLOTS:
    void on_softApTimer_timeout();

Q_SIGNALS:
    /// No link came up in time.
    void waitedInVain();

private:
    SoftAps& m_softAps;
    Networking_LowLevel& m_lowlevel;
    const Picture& m_picture;
    const NetworkingLife& m_life;
    bool m_softApAutoEnabled = false; ///< The device may have an access point of its own.
    bool m_localSoftApActive = false; ///< It is wanted, also while it may not be.
    /// Wrong keys have emptied the stored profile, and the timer has not been started since: while
    /// networking is stopped it is not.
    bool m_authFailureFallback = false;
    QTimer m_softApTimer{this};
};
