// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/softap/accesspointengine.h"
#include "world/real/softap/addressserver.h"
#include "world/real/softap/rightofway.h"
#include "world/real/softap/softapconfiguration.h"
#include "world/real/softap/softapinterface.h"

/// The soft access point of this machine: an interface beside the wireless one, hostapd on it, and
/// dnsmasq for the addresses of its stations.
///
/// It starts on the channel of the network that the radio has joined, and makes way where the radio
/// cannot join one beside it.
class RealSoftAp : public QObject
{
    Q_OBJECT

public:
    /// The references outlive it.
    RealSoftAp(World& world, Kernel& kernel, const RealSettings& settings, RealRadio& radio);
    /// Ends the engines, and removes the interface if it was made here.
    ~RealSoftAp() override;
    Q_DISABLE_COPY(RealSoftAp)

    /// Refused when a program is missing.
    Result<> start(const SoftApSettings& settings);
    void stop();
    /// The radio has other networks to join: it makes way for them, also where it has in vain.
    void welcomeNetworks() { m_rightOfWay.renew(); }
    /// The device has another network besides, or none.
    void setUplink(bool has);
    /// Looks at the kernel and at the radio; called whenever either has changed.
    void update();
    /// Removes what a lumod that was killed has left: its engines and its interface.
    void clearUp();

    /// There is a radio to carry it.
    [[nodiscard]] bool exists() const { return m_interface.exists(); }
    [[nodiscard]] InterfaceDetails details() const;
    void announceStatus();

private:
    enum class Phase {
        Down,
        Waiting, ///< wanted, and not possible yet or not any more
        Starting,
        Up,
        Leaving, ///< being taken down
    };

    void launch();
    void halt();
    void halted();
    void left();
    void comeUp(int channel);
    void interrupt();
    void retreat();
    void makeWay();
    void fail(const QString& why, int pause);
    void dropStations();
    void enter(Phase phase);
    void tell(const QString& fault);
    void tellDown();
    [[nodiscard]] bool isRunning() const
    {
        return m_phase == Phase::Starting || m_phase == Phase::Up;
    }
    [[nodiscard]] bool isIdle() const;
    [[nodiscard]] SoftApPlace place() const;
    [[nodiscard]] InterfaceStatus currentStatus() const;

    World& m_world;
    const RealSettings& m_settings;
    RealRadio& m_radio;
    RightOfWay m_rightOfWay;
    SoftApInterface m_interface;
    AccessPointEngine m_engine;
    AddressServer m_server;
    SoftApSettings m_wish; ///< the settings it shall have
    Phase m_phase = Phase::Down;
    InterfaceStatus m_status = InterfaceStatus::Absent;
    bool m_wanted = false;
    bool m_hasUplink = false;
    bool m_told = false;    ///< clients were told that it is connected, a restart notwithstanding
    int m_channel = 1;      ///< it is on
    QStringList m_stations; ///< hardware addresses
    QString m_fault;        ///< the last one told, until it is up
    int m_failures = 0;     ///< in a row
    QTimer m_pause;         ///< before another try
};
