// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

#include <QHostAddress>

// The checks of who may speak to the page, and under which name. Plain values in, plain values out.

/// The way by which a connection came in.
enum class WayIn {
    Refused,  ///< by none that is open
    Loopback, ///< from this machine
    SoftAp,   ///< through an access point of the device
    Wired,    ///< through the cable
    Wireless  ///< through the wireless network
};

/// The way of a connection between these two. Both must lie in one network that the device has on
/// an interface at present: an address that is further away, or pretended, is refused.
[[nodiscard]] WayIn wayIn(const QHostAddress& local, const QHostAddress& peer,
                          const OrvaNetworkInfo& info, bool homeNetwork);

/// True if the Host header names the device as it is reached on `local`: its address, one of
/// `names`, or localhost on the loopback. A foreign page whose name was made to lead here sends
/// another name.
[[nodiscard]] bool isOwnHost(const QByteArray& host, const QHostAddress& local,
                             const QStringList& names);

/// True if a request may come from a page of ours: `origin` (of the Origin header) and `site` (of
/// Sec-Fetch-Site) are empty or name it.
[[nodiscard]] bool isSameOrigin(const QByteArray& host, const QByteArray& origin,
                                const QByteArray& site);

/// Compares in a time that does not tell how much is right.
[[nodiscard]] bool isSameSecret(const QByteArray& left, const QByteArray& right);
