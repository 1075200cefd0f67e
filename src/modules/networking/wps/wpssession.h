// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"
#include "core/model/cmrequest.h"

#include <functional>
#include <optional>

class Picture;

/// Wi-Fi Protected Setup: joins a network without its key being typed in. At most one session runs
/// at a time; its progress is shown in the connecting message and in the published record.
class WpsSession : public QObject
{
    Q_OBJECT
public:
    /// Makes another profile of the one in use.
    using ProfileEdit = std::function<OrvaNetworkProfile(const OrvaNetworkProfile& profile)>;
    /// Puts the edited profile in use. The reply ends when it is stored, or refused.
    using ChangeProfile = std::function<CMReply<QVariant>(const ProfileEdit& edit)>;

    /// Backend and picture must outlive this object.
    WpsSession(Networking_LowLevel& backend, Picture& picture, const ChangeProfile& changeProfile);

    /// True while a session runs.
    [[nodiscard]] bool isRunning() const { return m_wpsRequest.has_value(); }

Q_SIGNALS:
    /// A session needs the radio, or no longer does.
    void wifiNeeded(bool needed);

public Q_SLOTS:
    void on_generateWpsPin_req(const CMSetDataRequest& request);
    void on_performWpsPbc_req(const CMSetDataRequest& request);
    void on_performWpsPin_req(const CMSetDataRequest& request);
    void on_applyWps_req(const CMSetDataRequest& request);
    void on_cancelWps_req(const CMSetDataRequest& request);

private:
    using WpsReply = CMReply<OrvaNetworkInterface>;

    /// Refuses the request while a session runs; true if so.
    [[nodiscard]] bool refuseSecond(const CMSetDataRequest& request, const char* context);
    void announce(OrvaNetworkWpsType type, const QString& message);
    void start(const CMSetDataRequest& request, const char* context,
               const std::function<bool(const WpsReply& reply)>& perform);
    void wpsFinished(const WpsReply& reply);
    void succeed(const OrvaNetworkInterface& credentials);
    void fail(const CMError& error);

    Networking_LowLevel& m_lowlevel;
    Picture& m_picture;
    const ChangeProfile m_changeProfile;
    /// The request whose session runs; none while no session does. The reply that ends the session
    /// is the backend's; what the picture shows of a session stays after its end.
    std::optional<CMSetDataRequest> m_wpsRequest;
};
