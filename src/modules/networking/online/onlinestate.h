// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "online/onlinerules.h"

#include <QPointer>
#include <QTimer>

class CMNodes;
class CMValueItem;
class CMValueNode;
class OnlineProbe;

/// Publishes how far the device gets out of its network.
///
/// The gateway is judged by the watchdog's ping. Beyond it nothing is asked unless a setting names
/// the URL of a probe: then at once when there is a gateway or another one, and again every five
/// minutes, every half minute while the answer is not the one expected. Without the setting or a
/// gateway there is neither timer nor socket.
class OnlineState : public QObject
{
    Q_OBJECT
public:
    /// Binds the node and follows the info, which both exist in `nodes`.
    OnlineState(const CMNodes& nodes, QObject* parent);

public Q_SLOTS:
    /// The gateway answered a ping, or did not.
    void noteEcho(bool answered);

private:
    void follow(const OrvaNetworkInfo& info);
    /// Forgets what the probe has found, and asks anew where that is wanted.
    void restart();
    void ask();
    void publish();

    CMValueNode* const m_node;
    CMValueItem* const m_url;
    CMValueItem* const m_body;
    OrvaNetworkInfo m_info; ///< Its state and its gateways alone.
    GatewayEcho m_echo = GatewayEcho::Unknown;
    ProbeOutcome m_outcome = ProbeOutcome::Unknown;
    QPointer<OnlineProbe> m_probe; ///< The one that runs.
    QTimer m_nextTimer{this};
};
