// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaroles.h"
#include "network/networkrecords.h"

/// The row that publishes a scan result. Its id is the SSID's UTF-8 in lower-case hexadecimal, so
/// that networks of one SSID share a row; an empty SSID has the empty id.
[[nodiscard]] OrvaRoles scanRow(const OrvaNetworkScanResult& result);
