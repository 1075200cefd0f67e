// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"
#include "world/worldtypes.h"

#include <QVariantMap>

/// The settings of a soft access point, from the map that a client sends: a default for each field
/// that is absent or unusable, which is logged. Refused are an SSID that no beacon can carry, and a
/// pass phrase that is none: without it the access point would be open.
Result<SoftApSettings> softApSettings(const QVariantMap& map);

/// The map with its pass phrase hidden.
[[nodiscard]] QVariantMap maskedSoftApSettings(const QVariantMap& map);
