// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"
#include "core/orvaresult.h"
#include "life.h"
#include "picture/networkinforules.h"
#include "profile/profiletrial.h"

#include <QQueue>

#include <functional>

class Networking_LowLevel;
class Picture;

/// The network profile: the one in use, the requests to change it, and the handling of wrong keys.
///
/// Requests for a profile are taken one at a time, each until it is on the disk. A profile that the
/// disk refuses leaves the one before in use, and none is built on it; one that comes back from a
/// trial is in use all the same, and the disk has it come back at the next start.
class Profiles : public QObject
{
    Q_OBJECT
public:
    /// The device's own change of the profile in use: gives the profile that it becomes, or why it
    /// stays.
    using Change = std::function<OrvaResult<OrvaNetworkProfile>(const OrvaNetworkProfile& inUse)>;

    /// Binds the profile's nodes, which exist in `nodes`, and publishes the stored profile; a trial
    /// that an end of the host has left is over. All that is given must outlive this object.
    Profiles(const CMNodes& nodes, Networking_LowLevel& backend, Picture& picture,
             const NetworkingLife& life);

    /// The profile that was applied last, with its keys; empty before the first start.
    [[nodiscard]] const OrvaNetworkProfile& inUse() const { return m_profile; }
    /// The interfaces that the profile in use asks for; none while networking is stopped.
    [[nodiscard]] Configured configured() const;

    /// Puts the stored profile in use.
    void start();
    /// Asks for a change through the node that sets a profile, as a client would for a profile of
    /// its own. The change begins with the profile that is in use when the request's turn has come,
    /// so that the changes of others until then stay. The reply is answered when the profile is
    /// stored.
    CMReply<QVariant> requestChange(const Change& change);

    /// A wireless link is up: wrong keys are not counted until the next profile.
    void stopCountingAuthFailures() { m_authFailureCount = -1; }
    /// A key was refused. Too many of them empty the profile.
    void countAuthFailure();

public Q_SLOTS:
    void on_setNetworkProfile_req(const CMSetDataRequest& request);
    void on_removeWirelessNetwork_req(const CMSetDataRequest& request);
    /// Confirms the profile on trial or has the one before come back, as the request's path says.
    void on_endTrial_req(const CMSetDataRequest& request);
    void on_restoreBackup_req(const CMSetDataRequest& request);

Q_SIGNALS:
    /// The radio is needed or not: a profile that has a wireless network is about to be applied, or
    /// one that has none takes the place of one that could not be stored.
    void wifiNeeded(bool needed);
    /// A profile, which is in use by now, is about to be handed to the network.
    void applying();
    /// A profile that is stored was applied in place of another.
    void profileApplied(const OrvaNetworkProfile& newProfile, const OrvaNetworkProfile& oldProfile);
    /// Wrong keys have emptied the profile that is stored now. Comes before `profileApplied`.
    void wirelessNetworksDropped();

private:
    void take(const CMSetDataRequest& request);
    /// Starts the first waiting request that is not refused.
    void startNextRequest();
    // False when the request was refused, which it is told.
    bool setProfile(const CMSetDataRequest& request);
    bool endTrial(const CMSetDataRequest& request);
    /// The profile that the request asks for.
    [[nodiscard]] OrvaResult<OrvaNetworkProfile>
    requestedProfile(const CMSetDataRequest& request) const;
    [[nodiscard]] OrvaNetworkProfile unhidePassword(const OrvaNetworkProfile& profile) const;
    [[nodiscard]] OrvaNetworkProfile extractNetworkProfile(const CMSetDataRequest& request) const;
    void store(const OrvaNetworkProfile& before);
    // The way of a profile to the disk (profilestoring.cpp).
    /// The first waiting request's profile is on the disk, or not.
    void profileStored(const OrvaNetworkProfile& before, const CMError& error);
    /// The request is done, its profile on the disk.
    void settle(const CMSetDataRequest& request, const OrvaNetworkProfile& before);
    /// The request's profile could not be stored.
    void giveUp(const CMSetDataRequest& request, const OrvaNetworkProfile& before);
    /// Puts a profile in use that was so before.
    void goBackTo(const OrvaNetworkProfile& profile);

    bool applyProfile(const OrvaNetworkProfile& profile);
    void publishKnownNetworks();
    /// Publishes the profile in use, and counts wrong keys from now on.
    void adoptProfile();

    /// Backs the profile up and goes on without wireless networks, so that the device can be set up
    /// again.
    void dropWirelessNetworks();
    [[nodiscard]] OrvaResult<OrvaNetworkProfile> forgetNetworks(const OrvaNetworkProfile& profile);

    Networking_LowLevel& m_lowlevel;
    Picture& m_picture;
    const NetworkingLife& m_life;
    /// Shows the profile without its keys; until the first start the stored one.
    CMValueNode* const m_profileNode;
    /// The settings hold the same profile, except while it is being stored or after that failed.
    OrvaNetworkProfile m_profile;
    ProfileTrial m_trial;

    const qint32 m_maxAuthFailures;
    qint32 m_authFailureCount = -1; ///< Less than 0: none is counted.
    /// Wrong keys have emptied the profile that is being stored. Told when it is on the disk, for a
    /// profile that the disk refuses must not bring the local soft AP sooner.
    bool m_networksDropped = false;

    /// The changes of the device's own requests for a profile, by their replies, which nobody else
    /// has. It outlives the requests: those that are dropped at the end still take theirs out.
    QHash<const CMReplyData*, Change> m_changes;
    /// Requests for a profile, and for the end of a trial. The first one's profile is in use and
    /// being stored.
    QQueue<CMSetDataRequest> m_requests;
};
