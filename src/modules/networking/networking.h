#pragma once

#include "backend/networkinglowlevel.h"
#include "backend/networklistener.h"
#include "core/orva.h"
#include "monotonicclock.h"
#include "network/networkrecords.h"
#include "picture/picture.h"
#include "radio/airplanemode.h"
#include "radio/wifiresource.h"
#include "radio/wirelesslink.h"
#include "scan/scans.h"
#include "softap/localsoftap.h"
#include "softap/softaps.h"
#include "wps/wpssession.h"

#include <QQueue>
#include <QSet>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class WifiRestart;

/// The network manager: owns the network subtree of the node tree, drives the network through one
/// backend and publishes one true picture of it.
///
/// One class, because its state is one; the rules that need no state are functions of their own
/// beside it. Its operations stand in one source file a theme: construction and node table in
/// networking.cpp, then lifecycle, profile, state, scan, wps, softap and radio. Everything runs on
/// the event loop's thread.
class Networking : public CMNodesWorker, public NetworkListener
{
    Q_OBJECT
public:
    /// Makes the backend for a worker. Tests put their own in.
    using BackendFactory = std::function<std::unique_ptr<Networking_LowLevel>(NetworkListener&)>;

    /// Chooses the backend by the root file system. `config` goes to the base class unread.
    explicit Networking(const QVariantHash& config);
    Networking(const QVariantHash& config, const BackendFactory& createBackend);
    ~Networking() override;

    /// Whether the backend must be the fake one: the root file system is a network file system, or
    /// the mount table cannot be read. `ORVA_MOUNT_TABLE` in the environment names another table
    /// than /proc/mounts, for development.
    [[nodiscard]] static bool isNFS();

    /// Puts another clock in, for tests. Moments that were taken from the old one stay as they are.
    void setClock(const MonotonicClock& clock) { m_clock = clock; }

    // What the backend asks and reports.
    [[nodiscard]] QString wiredInterface() const override { return m_wiredInterfaceName; }
    [[nodiscard]] QString wirelessInterface() const override { return m_wirelessInterfaceName; }
    [[nodiscard]] QStringList softapInterfaces() const override
    {
        return m_softAps.softapInterfaces();
    }
    [[nodiscard]] QStringList disconnectingInterfaces() const override;
    void setLinkStatus(const QString& interface, bool up) override;
    void setDisconnecting(const QString& interface) override;
    void setCurrentCableStatus(bool connected) override;

    /// What the nodes publish: whether some link other than a soft AP is up, and whether a cable is
    /// in.
    [[nodiscard]] bool linkStatus() const { return m_picture.linkStatus(); }
    [[nodiscard]] bool currentCableStatus() const { return m_picture.currentCableStatus(); }

    /// Airplane mode is taken over only when it is stored.
    void setDataRequest(const CMSetDataRequest& request) override;

public Q_SLOTS:
    // Life cycle.
    void on_start_req(const CMSetDataRequest& request);
    void on_stop_req(const CMSetDataRequest& request);
    void on_restart_req(const CMSetDataRequest& request);
    void on_shutdown_req(const CMSetDataRequest& request);
    void on_shutdownTimer_timeout();

    // Profile.
    void on_setNetworkProfile_req(const CMSetDataRequest& request);
    void on_removeWirelessNetwork_req(const CMSetDataRequest& request);

    // Backend.
    void on_lowlevel_AuthError(const QString& ssid, const QString& description);
    void on_lowlevel_Error(const QString& message);
    void on_lowlevel_InterfaceStatusChanged(const QString& interface,
                                            Networking_LowLevel::InterfaceStatus status);

private:
    // Construction (networking.cpp).
    void connectRooms();
    void connectBackend();
    void bindActions();
    void registerWithPowerManager();

    // Life cycle (lifecycle.cpp).
    void cancelShutdown();

    // Profile (profile/profiles.cpp).
    [[nodiscard]] OrvaNetworkProfile unhidePassword(const OrvaNetworkProfile& profile) const;
    [[nodiscard]] OrvaNetworkProfile extractNetworkProfile(const CMSetDataRequest& request) const;
    bool applyProfile(const OrvaNetworkProfile& profile);
    void publishKnownNetworks(const OrvaNetworkProfile& profile);
    /// What the worker itself wants of the profile in use: changes it, or says why it stays.
    using ProfileChange = std::function<CMError(OrvaNetworkProfile& profile)>;
    /// Asks for a change through the node that sets a profile, as a client would for a profile of
    /// its own. It is made of the profile that is in use when the request's turn has come, so that
    /// what others set until then stays.
    CMReply<QVariant> requestProfileChange(const ProfileChange& change);
    /// Starts the first waiting request for a profile that is not refused.
    void setNextProfile();
    /// False when the request was refused, which it is told.
    bool setProfile(const CMSetDataRequest& request);
    /// The profile that the request asks for; the reason where there is none.
    [[nodiscard]] CMError requestedProfile(const CMSetDataRequest& request,
                                           OrvaNetworkProfile& profile) const;
    /// The first waiting request's profile is on the disk, or not.
    void profileStored(const OrvaNetworkProfile& before, const CMError& error);
    void restoreProfile(const OrvaNetworkProfile& before);
    /// Applies a profile that is stored.
    void useProfile(const OrvaNetworkProfile& profile);
    void adoptProfile(const OrvaNetworkProfile& profile);
    /// Backs the profile up and goes on without wireless networks, so that the device can be set up
    /// again.
    void dropWirelessNetworks();
    [[nodiscard]] CMError forgetNetworks(OrvaNetworkProfile& profile);

    // What crosses the rooms (networking.cpp).
    void setNetworkLinkStatus(const QString& interface, bool up);
    void updateConnectingMessage(const QString& message);

    // For the rooms that are none yet.
    [[nodiscard]] OrvaNetworkInfo info() const { return m_picture.info(); }
    void publishInfo(const OrvaNetworkInfo& info)
    {
        m_picture.edit([&](OrvaNetworkInfo& published) { published = info; });
    }

    CMReply<QVariant> editProfile(const WpsSession::ProfileEdit& edit);
    void restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                            const OrvaNetworkProfile& oldProfile);

    const QString m_wiredInterfaceName;
    const QString m_wirelessInterfaceName;
    std::unique_ptr<Networking_LowLevel> m_lowlevel;
    Picture m_picture;
    MonotonicClock m_clock = monotonicMs;

    // The rooms.
    WifiResource m_wifiResource{this};
    WirelessLink m_wirelessLink;
    AirplaneMode m_airplaneMode;
    Scans m_scans;
    WpsSession m_wpsSession;
    SoftAps m_softAps;
    LocalSoftAp m_localSoftAp;

    // Life cycle.
    bool m_started = false;
    bool m_shutdownInProgress = false;
    QTimer m_shutdownTimer{this};

    // Profile. What is configured is said of the profile last applied; nothing is after a stop.
    OrvaNetworkProfile m_profile;
    Configured m_configured;
    qint32 m_authFailureCount = -1;
    qint32 m_maxAuthFailures = 0;
    /// What the worker's own requests for a profile want, by their replies, which nobody else has.
    /// Outlives the requests: those that are dropped at the end still take theirs out.
    QHash<const CMReplyData*, ProfileChange> m_profileChanges;
    /// Requests for a profile; that of the first one is in use and being stored.
    QQueue<CMSetDataRequest> m_profileRequests;

    // Nodes; the container of the base class owns them.
    CMValueNode* m_profileNode = nullptr;

    WifiRestart* m_wifiRestart = nullptr; ///< A child of the worker.
};
