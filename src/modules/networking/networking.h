// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"
#include "backend/networklistener.h"
#include "core/orva.h"
#include "network/networkrecords.h"
#include "online/onlinestate.h"
#include "picture/picture.h"
#include "profile/profiles.h"
#include "radio/airplanemode.h"
#include "radio/lastjoin.h"
#include "radio/radioblock.h"
#include "radio/wifiresource.h"
#include "radio/wirelesslink.h"
#include "scan/scans.h"
#include "softap/localsoftap.h"
#include "softap/softaps.h"
#include "wake/wakeonlan.h"
#include "wps/wpssession.h"

#include <QTimer>

#include <functional>
#include <memory>

class WifiRestart;

/// The network manager: owns the network subtree of the node tree, drives the network through one
/// backend and publishes one true picture of it.
///
/// Each state of its own is owned by a class in its room: picture, profiles, scans, the WPS
/// session, soft access points, the radio. The worker holds them together: it creates the nodes and
/// binds them to the rooms' slots, owns the life, and does what concerns several rooms, which know
/// each other by it alone. Everything runs on the event loop's thread.
class Networking : public CMNodesWorker, public NetworkListener
{
    Q_OBJECT
public:
    /// The features that need the radio.
    using ResourceRequestSubmodule = WifiResource::ResourceRequestSubmodule;

    /// Makes the backend for a worker. Tests put their own in.
    using BackendFactory = std::function<std::unique_ptr<Networking_LowLevel>(NetworkListener&)>;

    /// Chooses the backend by the root file system. `config` goes to the base class unread.
    explicit Networking(const QVariantHash& config);
    Networking(const QVariantHash& config, const BackendFactory& createBackend);
    ~Networking() override;

    /// True if the backend must be the fake one: the root file system is a network file system, or
    /// the mount table cannot be read. `ORVA_MOUNT_TABLE` in the environment names another table
    /// than /proc/mounts, for development.
    [[nodiscard]] static bool isNFS();

    // The backend's questions and reports (backendevents.cpp).
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

    /// The published facts: some link other than a soft AP is up, and a cable is in.
    [[nodiscard]] bool linkStatus() const { return m_picture.linkStatus(); }
    [[nodiscard]] bool currentCableStatus() const { return m_picture.currentCableStatus(); }

    /// Airplane mode is taken over only when it is stored.
    void setDataRequest(const CMSetDataRequest& request) override;

public Q_SLOTS:
    // Life cycle (lifecycle.cpp).
    void on_start_req(const CMSetDataRequest& request);
    void on_stop_req(const CMSetDataRequest& request);
    void on_restart_req(const CMSetDataRequest& request);
    void on_shutdown_req(const CMSetDataRequest& request);
    void on_shutdownTimer_timeout();

    // The backend's signals that concern several rooms (backendevents.cpp).
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
    void configureShutdownTimer();
    /// The one place where the life changes; logs the old one and the new one.
    void setLife(NetworkingLife life);
    void cancelShutdown();

    // Steps that concern several rooms (backendevents.cpp).
    void setNetworkLinkStatus(const QString& interface, bool up);
    /// The wireless network of the profile in use is wanted from now on.
    void beginJoin();
    void updateConnectingMessage(const QString& message);
    void restartSoftApTimer(const OrvaNetworkProfile& newProfile,
                            const OrvaNetworkProfile& oldProfile);

    const QString m_wiredInterfaceName;
    const QString m_wirelessInterfaceName;
    RadioBlock m_radios; ///< Before the backend, whose first questions its program runs beside.
    std::unique_ptr<Networking_LowLevel> m_lowlevel;
    NetworkingLife m_life;
    QTimer m_shutdownTimer{this};

    // The rooms.
    WakeOnLan m_wakeOnLan{this};
    Picture m_picture;
    Profiles m_profiles;
    WifiResource m_wifiResource{this};
    WirelessLink m_wirelessLink;
    LastJoin m_lastJoin;
    AirplaneMode m_airplaneMode;
    Scans m_scans;
    WpsSession m_wpsSession;
    SoftAps m_softAps;
    LocalSoftAp m_localSoftAp;
    OnlineState m_onlineState;

    WifiRestart* m_wifiRestart = nullptr; ///< A child of the worker.
};
