// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/childprocess.h"
#include "world/real/engines/datagramsocket.h"
#include "world/real/realsettings.h"
#include "world/real/softap/accesspointevent.h"

#include <QTimer>

/// hostapd on one interface: it is started, listened to and ended. Whoever owns it starts it again
/// where it ends by itself.
class AccessPointEngine : public QObject
{
    Q_OBJECT

public:
    /// `settings` outlive it.
    AccessPointEngine(QString interface, const RealSettings& settings);
    /// `end()`.
    ~AccessPointEngine() override;
    Q_DISABLE_COPY(AccessPointEngine)

    /// Starts it, which must not run, with the text of its configuration file; ends in `enabled`
    /// or `failed`.
    void start(const QByteArray& configuration);
    /// Asks it to end; `stopped` follows.
    void stop();
    /// For an owner that is going: ends it and waits for that, some seconds at most.
    void end();
    /// Removes what one that has ended, or a lumod that was killed, may have left.
    void clearUp();
    [[nodiscard]] bool isRunning() const { return m_child.isRunning(); }

Q_SIGNALS:
    /// Stations can join, on that channel.
    void enabled(int channel);
    /// Radar has driven it to another channel.
    void moved(int channel);
    /// The radio has been taken from under it; it goes on running, to no purpose.
    void disabled();
    void stationJoined(const QString& hwAddress);
    void stationLeft(const QString& hwAddress);
    /// It has ended by itself or does not come up; `why` is for a person. Whoever starts it again
    /// waits `pause` ms before.
    void failed(const QString& why, int pause);
    /// It has ended because it was asked to.
    void stopped();

private:
    void ask();
    void take(const QByteArray& datagram);

    QString m_interface;
    const RealSettings& m_settings;
    QString m_configuration; ///< file name
    ChildProcess m_child;
    DatagramSocket m_socket;
    QTimer m_ask;            ///< until it is enabled
    int m_asked = 0;         ///< times
    bool m_attached = false; ///< it tells us events
    bool m_stuck = false;    ///< it is being ended since it does not come up
};
