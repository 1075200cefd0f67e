// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"
#include "core/orvaresult.h"
#include "network/networkrecords.h"

#include <QTimer>

#include <optional>

/// A profile on trial: the one before comes back when the time is over.
///
/// The profile that comes back is kept in a setting, so that it does so after an end of the host,
/// too. It is written together with the one in use: the disk has either both or none.
class ProfileTrial : public QObject
{
    Q_OBJECT
public:
    /// Binds the node of the pending profile, which exists in `nodes`.
    explicit ProfileTrial(const CMNodes& nodes);

    // The kinds of request.
    [[nodiscard]] static bool isAskedBy(const CMSetDataRequest& request);
    [[nodiscard]] static bool isConfirmedBy(const CMSetDataRequest& request);
    [[nodiscard]] static bool isRolledBackBy(const CMSetDataRequest& request);
    [[nodiscard]] static bool isExpiredBy(const CMSetDataRequest& request);
    [[nodiscard]] static bool isEndedBy(const CMSetDataRequest& request)
    {
        return isConfirmedBy(request) || isRolledBackBy(request) || isExpiredBy(request);
    }
    /// The request that ends a trial whose time is over. No client makes one.
    [[nodiscard]] static CMSetDataRequest expiry();
    /// Fails where the time of a request for a trial is out of range.
    [[nodiscard]] static OrvaResult<void> check(const CMSetDataRequest& request);

    /// The profile that an end of the host has left on the disk to come back; empty for none.
    [[nodiscard]] static OrvaNetworkProfile leftOver();
    // The profile comes back after an end of the host, or none does. The disk has it together with
    // what is written in the same turn.
    static void keep(const OrvaNetworkProfile& before);
    static void forget();

    /// True while a profile is on trial.
    [[nodiscard]] bool isRunning() const { return m_before.has_value(); }
    /// True while its time lasts.
    [[nodiscard]] bool isInTime() const { return m_timer.isActive(); }
    /// The profile that comes back, with its keys, while one is on trial.
    [[nodiscard]] const OrvaNetworkProfile& before() const { return *m_before; }

    /// The request's profile is in use, and stored, in the place of `before`. A trial that runs
    /// goes on with the request's time, and with the profile that it had before.
    void begin(const CMSetDataRequest& request, const OrvaNetworkProfile& before);
    /// No profile is on trial any more.
    void end();

Q_SIGNALS:
    /// The time is over. The trial runs until it is ended.
    void expired();

private:
    CMValueNode* const m_node;
    std::optional<OrvaNetworkProfile> m_before; ///< Comes back, while a profile is on trial.
    QTimer m_timer{this};
};
