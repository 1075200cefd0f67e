// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/datagramsocket.h"
#include "world/real/engines/directorylock.h"
#include "world/real/kernel/kernel.h"
#include "world/real/link/nameservers.h"
#include "world/real/link/realcable.h"
#include "world/real/radio/realradio.h"
#include "world/real/softap/realsoftap.h"
#include "world/world.h"

/// The interfaces of this machine. Everything is answered from memory: no call waits for an engine.
class RealWorld : public World
{
    Q_OBJECT

public:
    explicit RealWorld(RealSettings settings);
    /// Takes the machine's network over. One at a time can.
    Result<> open();

    [[nodiscard]] QStringList interfaces() const override;
    [[nodiscard]] InterfaceDetails details(const QString& interface) const override;
    void announce() override;
    void bringUp(const NetworkConfiguration& configuration) override;
    void takeDown() override;
    void scan() override;
    void reassociate() override;
    void startWps(const QString& pin) override;
    void cancelWps() override;
    Result<> startSoftAp(const QString& interface, const SoftApSettings& settings) override;
    void stopSoftAp(const QString& interface) override;

private:
    void update();
    void take(const QByteArray& datagram);
    [[nodiscard]] RadioPermission permission() const;

    RealSettings m_settings;
    DirectoryLock m_lock; ///< of the runtime directory; goes last, when all engines have ended
    Kernel m_kernel;
    DatagramSocket m_events;
    NameServers m_nameServers;
    RealCable m_cable;
    RealRadio m_radio;
    RealSoftAp m_softAp;
    std::optional<NetworkMode> m_mode; ///< empty: everything is off
};
