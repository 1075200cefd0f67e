#pragma once

#include "backend/networkinglowlevel.h"
#include "backend/networklistener.h"
#include "core/orva.h"
#include "monotonicclock.h"
#include "network/networkrecords.h"
#include "picture/picture.h"
#include "radio/wifiresource.h"
#include "softap/softaps.h"

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
        return m_softAps->softapInterfaces();
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

    // Scanning.
    void on_scanNetworks_req(const CMSetDataRequest& request);

    // WPS.
    void on_generateWpsPin_req(const CMSetDataRequest& request);
    void on_performWpsPbc_req(const CMSetDataRequest& request);
    void on_performWpsPin_req(const CMSetDataRequest& request);
    void on_applyWps_req(const CMSetDataRequest& request);

    // The local soft access point.
    void on_softApTimer_timeout();

    // Radio.
    void on_forceWifiReconnect_req(const CMSetDataRequest& request);
    void on_wirelessRssiNode_activated(const CMSetDataRequest& request);
    void on_airplaneMode_changed(const OrvaValue& value);

    // Backend.
    void on_lowlevel_AuthError(const QString& ssid, const QString& description);
    void on_lowlevel_Error(const QString& message);
    void on_lowlevel_InterfaceStatusChanged(const QString& interface,
                                            Networking_LowLevel::InterfaceStatus status);
    void on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>& results);

private:
    // Construction (networking.cpp).
    void createSoftAps();
    void connectTimers();
    void connectBackend();
    void readSoftApAutoEnabled();
    void bindActions();
    void registerWithPowerManager();
    void followAirplaneMode();

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
    /// Starts the local soft access point again, once, when its interface is seen.
    void restoreLocalSoftAp();
    void updateConnectingMessage(const QString& message);

    // For the rooms that are none yet.
    [[nodiscard]] OrvaNetworkInfo info() const { return m_picture.info(); }
    void publishInfo(const OrvaNetworkInfo& info)
    {
        m_picture.edit([&](OrvaNetworkInfo& published) { published = info; });
    }

    // WPS (wps/wpssession.cpp).
    using WpsStart = std::function<bool(const CMReply<OrvaNetworkInterface>& reply)>;
    [[nodiscard]] bool refuseSecondWps(const CMSetDataRequest& request, const char* signature);
    void announceWps(OrvaNetworkWpsType type, const QString& message);
    void startWps(const CMSetDataRequest& request, const char* signature, const WpsStart& start);
    void publishWps(OrvaNetworkWpsStatus status, const std::function<void(OrvaNetworkWps&)>& also);
    void wpsFinished(const CMReply<OrvaNetworkInterface>& reply);
    void wpsSucceeded(const OrvaNetworkInterface& credentials);
    void wpsFailed(const CMError& error);

    // The worker's own, local soft access point (softap/localsoftap.cpp).
    void activateLocalSoftAp();
    void deactivateLocalSoftAp();
    void startSoftApTimer();
    void startSoftApTimer(unsigned int seconds);
    void stopSoftApTimer();
    void restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                            const OrvaNetworkProfile& oldProfile);

    // Scanning (scan/scans.cpp).
    struct QueuedScan
    {
        CMSetDataRequest request;
        qint64 arrivedMs; ///< On the worker's clock.
    };
    void scanNetworks(const QueuedScan& scan);
    void startScan(const CMSetDataRequest& request);
    void refuseScan();
    void clearScanResults();
    void stopIdleScanTimer();
    void guardQueuedScans();
    /// Runs the scan requests that waited for the wireless interface, which is idle now.
    void startQueuedScans();
    void on_scanTimer_timeout();

    const QString m_wiredInterfaceName;
    const QString m_wirelessInterfaceName;
    std::unique_ptr<Networking_LowLevel> m_lowlevel;
    Picture m_picture;
    MonotonicClock m_clock = monotonicMs;

    // Life cycle.
    bool m_started = false;
    bool m_shutdownInProgress = false;
    QTimer m_shutdownTimer;

    // Profile. What is configured is said of the profile last applied; nothing is after a stop.
    OrvaNetworkProfile m_profile;
    Configured m_configured;
    qint32 m_authFailureCount = -1;
    qint32 m_maxAuthFailures = 0;
    bool m_authFailureFallback = false;
    /// What the worker's own requests for a profile want, by their replies, which nobody else has.
    /// Outlives the requests: those that are dropped at the end still take theirs out.
    QHash<const CMReplyData*, ProfileChange> m_profileChanges;
    /// Requests for a profile; that of the first one is in use and being stored.
    QQueue<CMSetDataRequest> m_profileRequests;

    // Scanning. Whenever the timer stands still, both lists are empty.
    QVector<CMReply<QVariant>> m_pendingScanReplies;
    QVector<QueuedScan> m_queueScanRequests;
    QTimer m_scanTimer;

    // WPS: the session in progress.
    std::optional<CMSetDataRequest> m_wpsRequest;

    // Soft access point.
    std::unique_ptr<SoftAps> m_softAps;
    bool m_softApAutoEnabled = false;
    bool m_localSoftApActive = false;
    QTimer m_softApTimer;

    // Radio.
    OrvaAirplaneModeType m_airplaneModeType;
    WifiResource m_wifiResource{this};

    // Nodes; the container of the base class owns them.
    CMListRowsNode* m_scanResultsNode = nullptr;
    CMValueNode* m_profileNode = nullptr;
    CMValueNode* m_airplaneModeNode = nullptr;

    WifiRestart* m_wifiRestart = nullptr; ///< A child of the worker.
};
