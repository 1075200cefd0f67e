// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstdio>
#include <vector>

/// Prints the middle and the slowest hundredth of `nanoseconds`, in microseconds, as one JSON line.
inline void printPercentiles(const char* name, std::vector<qint64> nanoseconds)
{
    std::sort(nanoseconds.begin(), nanoseconds.end());
    const auto at = [&](std::size_t percent) {
        const std::size_t index = nanoseconds.size() * percent / 100;
        return static_cast<double>(nanoseconds[std::min(index, nanoseconds.size() - 1)]) / 1000.0;
    };
    std::printf("{\"name\":\"%s\",\"count\":%zu,\"p50_us\":%.1f,\"p99_us\":%.1f}\n", name,
                nanoseconds.size(), at(50), at(99));
}
