// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "settings.h"

/// The settings that the network manager reads and writes, with the defaults that hold where the
/// host's configuration names no others.
[[nodiscard]] QVector<SettingDefault> networkSettingDefaults();
