// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "orvaprocesshandler.h"

#include <QObject>
#include <QTimer>

class CMValueItem;

/// Pings the IPv4 gateway at an interval while Wi-Fi is connected, and logs and tells whether it
/// answers. A gateway that is no IPv4 address counts as none.
///
/// At most one ping runs at a time, and none outlives the object. One whose host was killed ends
/// with the service's cgroup, by its parent death signal where it still has it (see
/// OrvaProcessHandler), or by its own waiting time of 3 seconds. Lives on the host's event-loop
/// thread.
class Pinger : public QObject
{
    Q_OBJECT

public:
    /// Pings every `intervalMs` milliseconds, for the first time after one interval.
    Pinger(QObject* parent, int intervalMs);

public Q_SLOTS:
    /// Sends one ping, after killing one that still runs.
    void on_timer_timeout();

Q_SIGNALS:
    /// The gateway answered, or did not.
    void pinged(bool answered);

private:
    void ping(const QString& gateway);

    CMValueItem* m_info;
    QTimer m_timer;
    OrvaProcessHandler m_process; ///< Kills its program when it goes.
};
