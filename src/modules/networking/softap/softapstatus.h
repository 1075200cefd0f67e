#pragma once

#include "softap/softaptable.h"

#include <QMap>

/// The live requests of all interfaces as they are published, by interface and then in their order.
/// `links` says of each interface whether its link is up; `nowMs` is now, on the clock of the
/// deadlines.
[[nodiscard]] OrvaList<OrvaNetworkSoftApRequestStatus>
softApRequestStatuses(const QMap<QString, SoftApTable>& tables,
                      const QHash<QString, OrvaNetworkState>& links, qint64 nowMs);
