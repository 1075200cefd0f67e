#pragma once

#include "softApTable.h"

#include <QtCore/QMap>

/// The live requests of all interfaces as they are published, by interface and then in their order.
/// `active` holds the settings of the soft APs that run; `nowMs` is the moment of publishing, on
/// the clock of the deadlines.
[[nodiscard]] OrvaList<OrvaNetworkSoftApRequestStatus>
softApRequestStatuses(const QMap<QString, SoftApTable>& tables,
                      const QMap<QString, OrvaNetworkProfileSoftApSettings>& active, qint64 nowMs);
