// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "watchdog/netlinkinfo.h"
#include "watchdog/stucklink.h"

#include "network/networkrecords.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class CMSetDataRequest;
class CMValueItem;
class Pinger;

/// Restarts Wi-Fi when its interface keeps sending and never receives.
///
/// Samples the interface's packet counters at the interval of the Wi-Fi restart criteria, a setting
/// of the host that may change at any time; without valid criteria no samples are taken. A restart
/// is the invocation of the activate node that the criteria name. From the first valid criteria on
/// the gateway is pinged at the interval of the last valid ones, which nothing here depends on.
/// Lives on the host's event-loop thread.
class WifiRestart : public QObject
{
    Q_OBJECT

public:
    /// Watches `interfaceName`. The soft-AP interfaces share its radio but are not watched.
    WifiRestart(QObject* parent, const QString& interfaceName, const QStringList& softApInterfaces);
    ~WifiRestart() override;

public Q_SLOTS:
    /// The criteria are known for the first time.
    void on_init_done();
    /// Starts sampling anew, or stops it when the criteria do not ask for it. What was learnt from
    /// earlier samples stays.
    void on_criteria_changed(const OrvaValue& value);
    /// Takes one sample: one round trip to the kernel.
    void on_timer_timeout();
    /// Restarts Wi-Fi on request and answers with the outcome; with an error when the criteria name
    /// no node to do it, or the very node of the request.
    void on_restart_requested(const CMSetDataRequest& request);

Q_SIGNALS:
    /// The gateway answered a ping, or did not.
    void gatewayPinged(bool answered);

private:
    [[nodiscard]] LinkSample takeSample();
    [[nodiscard]] OrvaNetworkWifiRestartCriteria criteria() const;
    void log(StuckLinkVerdict verdict, quint32 oldCount) const;
    void restart() const;

    const QString m_interfaceName;
    NetLinkInfo m_netLinkInfo;
    CMValueItem* m_criteria = nullptr;
    QTimer m_checkTimer;
    Pinger* m_pinger = nullptr;
    StuckLinkState m_state;
};
