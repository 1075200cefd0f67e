// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

#include <QUrl>

#include <optional>

// How far the device gets out of its network, from plain values to plain values.

/// The outcome of the last ping of the gateway; `Unknown` until one has ended.
enum class GatewayEcho { Unknown, Answered, Silent };

/// The outcome of the last probe beyond the gateway.
enum class ProbeOutcome {
    Unknown,  ///< None has ended, or none is wanted.
    NoAnswer, ///< No server, or nothing that is HTTP.
    Portal,   ///< Somebody answered something else.
    Online    ///< The answer that was expected.
};

/// The port of a URL that names none.
constexpr int probePort = 80;

/// The URL of a probe, from the setting; none for an empty text and for one that is no http URL
/// with a host.
[[nodiscard]] std::optional<QUrl> probeUrl(const QString& setting);

/// The request for a URL.
[[nodiscard]] QByteArray probeRequest(const QUrl& url);

/// The meaning of an HTTP answer, which may be cut off: status 204, or 200 with this body, blanks
/// around it aside, where a body is expected. One that did not come to its end in time, and may yet
/// have been the expected one, is none.
[[nodiscard]] ProbeOutcome judgeProbe(const QByteArray& answer, const QString& body, bool inTime);

/// True if the device is connected and has a gateway.
[[nodiscard]] bool hasGateway(const OrvaNetworkInfo& info);

/// The state that all of this comes to.
[[nodiscard]] OrvaNetworkOnline onlineState(const OrvaNetworkInfo& info, GatewayEcho echo,
                                            ProbeOutcome probe);
