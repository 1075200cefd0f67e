// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/radio/supplicantdecoding.h"

// The preference among the networks that are known.

/// True if a connection to the one is a connection to the other.
[[nodiscard]] bool isSameNetwork(const KnownNetwork& a, const KnownNetwork& b);
/// The highest priority first.
[[nodiscard]] QVector<KnownNetwork> byPreference(QVector<KnownNetwork> networks);
/// True if `joined` is among `networks`, the preferred first, and none before it is heard.
[[nodiscard]] bool isBest(const KnownNetwork& joined, const QVector<KnownNetwork>& networks,
                          const QList<supplicant::Bss>& heard);
