// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

/// A worker whose nodes, read-only ones of the network's table, keep the values that it is given:
/// stands in for a worker of which others only ever read what it was configured with.
class FixedValues : public CMNodesWorker
{
    Q_OBJECT
public:
    FixedValues(const QString& name, const QVector<QPair<CMPath, OrvaValue>>& values);
};

/// The names of the network interfaces: `interfaces/wired` and `interfaces/wireless`.
[[nodiscard]] std::unique_ptr<CMAbstractWorker> createInterfaceNames(const QString& wired,
                                                                     const QString& wireless);

/// The web server: `webserver/port`.
[[nodiscard]] std::unique_ptr<CMAbstractWorker> createWebserver(qint32 port);
