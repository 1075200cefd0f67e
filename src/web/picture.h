// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "hostlink.h"

/// The nodes that the page shows.
[[nodiscard]] QVector<CMPath> picturePaths();

/// The state of the device as the page gets it, made field by field: no key is among them. `names`
/// are those under which the page is reached in the home network; none where it is not.
[[nodiscard]] QVariantHash statePicture(const HostLink& host, bool homeNetwork,
                                        const QStringList& names);

/// What the last scan found: each network once, by its strongest access point, strongest first.
[[nodiscard]] QVariantList networksPicture(const OrvaList<OrvaNetworkScanResult>& seen);
