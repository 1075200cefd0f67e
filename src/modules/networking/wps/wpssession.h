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
    /// Has the profile in use replaced by what `edit` makes of it; the reply tells what became of
    /// that.
    using ProfileEdit = std::function<OrvaNetworkProfile(const OrvaNetworkProfile& profile)>;
    using ChangeProfile = std::function<CMReply<QVariant>(const ProfileEdit& edit)>;

    /// Backend and picture must outlive this object.
    WpsSession(Networking_LowLevel& backend, Picture& picture, const ChangeProfile& changeProfile);

    /// Whether a session runs.
    [[nodiscard]] bool isRunning() const { return m_wpsRequest.has_value(); }

Q_SIGNALS:
    /// Whether a session needs the radio.
    void wifiNeeded(bool needed);

public Q_SLOTS:
    void on_generateWpsPin_req(const CMSetDataRequest& request);
    void on_performWpsPbc_req(const CMSetDataRequest& request);
    void on_performWpsPin_req(const CMSetDataRequest& request);
    void on_applyWps_req(const CMSetDataRequest& request);

private:
    using WpsReply = CMReply<OrvaNetworkInterface>;

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
    /// Whose session runs. The backend keeps the other half, the reply that ends it; what the
    /// picture shows of a session stays after its end.
    std::optional<CMSetDataRequest> m_wpsRequest;
};
