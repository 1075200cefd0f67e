#pragma once

#include "softap/softaptable.h"

#include <QMap>

// A live request keeps its deadline in its 32-bit `timeout` field: milliseconds on the monotonic
// clock, which wrap around every 49.7 days and are negative for half of that time. Deadlines
// compare by their signed difference, so that their order holds across the wrap; 0 alone means
// none.

/// The longest time-out that a request may ask for, in milliseconds.
constexpr qint32 longestSoftApTimeoutMs = 60000;

/// The deadline of a request that arrives at `nowMs` and asks for `timeoutMs`; 0 where that is 0 or
/// less. A deadline that would fall on 0 is 1.
[[nodiscard]] qint32 softApDeadline(qint64 nowMs, qint32 timeoutMs);

/// Milliseconds from `nowMs` to the deadline; negative once it has passed.
[[nodiscard]] qint32 millisecondsTo(qint32 deadline, qint64 nowMs);

/// The request with the earliest deadline, the first one found of several; empty when none has one.
/// The deadlines lie within 2^31 ms of each other.
[[nodiscard]] OrvaNetworkProfileSoftApRequest
nextExpiringSoftApRequest(const QMap<QString, SoftApTable>& tables);
