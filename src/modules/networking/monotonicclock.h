// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <chrono>

/// Milliseconds on the system's monotonic clock, which starts at boot and never goes back.
[[nodiscard]] inline qint64 monotonicMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}
