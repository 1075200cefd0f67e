// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

/// The interface of the first default route in a routing table as /proc/net/route has it; empty
/// when there is none.
[[nodiscard]] QString defaultRouteInterface(const QByteArray& routingTable);
