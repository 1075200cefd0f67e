// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostlink.h"

/// The nodes that the page shows.
[[nodiscard]] QVector<CMPath> picturePaths();

/// The state of the device as the page gets it, made field by field: no key is among them. `names`
/// are the names of the page in the home network; none where it is not reached from there.
[[nodiscard]] QVariantHash statePicture(const HostLink& host, bool homeNetwork,
                                        const QStringList& names, const QString& trialId);

/// The networks of the last scan, each once, by its strongest access point, strongest first.
[[nodiscard]] QVariantList networksPicture(const OrvaList<OrvaNetworkScanResult>& seen,
                                           const OrvaList<OrvaNetworkScanResult>& unsupported);
