// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"

#include <QTimer>

class CMNodes;
class CMValueNode;
class Picture;

/// The outcome of the last try to join a wireless network, published on a node.
///
/// A try begins when a network is wanted, and ends when one is joined or none is wanted any more.
/// The daemon may set out many times in it; each time that it fails an outcome is published. The
/// daemon tells of a refused key; every other reason is concluded from the radio's status, which
/// shows how far the daemon got.
class LastJoin : public QObject
{
    Q_OBJECT
public:
    /// Binds the node, which exists in `nodes`. `picture` must outlive this object.
    LastJoin(const CMNodes& nodes, const Picture& picture, QObject* parent);

    /// The network of that SSID is wanted from now on, or none where it is empty.
    /// `yieldsToCable` says that a wired link has precedence.
    void begin(const QString& ssid, bool yieldsToCable);
    /// The daemon tells the status of the radio.
    void follow(Networking_LowLevel::InterfaceStatus status);
    /// The network of that SSID refused the key. Counts once the daemon has set out in this try.
    void refuseKey(const QString& ssid);
    /// A link that may have precedence came up.
    void checkHindrance();

public Q_SLOTS:
    /// The picture shows what the backend tells: perhaps that a network is joined.
    void checkJoined();
    /// Nothing was joined in time.
    void fail();

private:
    /// How far the daemon got when it last set out in this try.
    enum class Reached { Nothing, Network, Address };

    [[nodiscard]] OrvaNetworkJoinReason hindrance() const;
    [[nodiscard]] OrvaNetworkJoinReason reason() const;
    void publish(const QString& ssid, OrvaNetworkJoinReason reason);

    const Picture& m_picture;
    CMValueNode* const m_node;
    QString m_ssid; ///< The most preferred network; empty while none is wanted or one is joined.
    bool m_yieldsToCable = false;
    bool m_keyRefused = false; ///< In this try, which no lesser reason hides.
    Reached m_reached = Reached::Nothing;
    bool m_setOut = false; ///< The daemon is on its way to a network.
    /// From the daemon's giving up to the outcome: it says that the radio is idle before it says
    /// that a network is joined, or that it refused the key.
    QTimer m_outcomeTimer{this};
};
