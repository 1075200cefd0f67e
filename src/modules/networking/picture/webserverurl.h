// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

/// The URL of the local web server: at the first address of the wired, else the wireless interface,
/// else the soft access point, of those that are connected. Empty where none has an address.
/// `portSuffix` is ":" and the port, or empty.
[[nodiscard]] QString webserverUrl(const OrvaNetworkInfo& info, const QString& portSuffix);

/// ":" and the port in decimal, empty for the default port (0 or less).
[[nodiscard]] QString webserverPortSuffix(qint32 port);
