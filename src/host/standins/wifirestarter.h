// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

/// Stands in for the worker that removes and re-adds the Wi-Fi interface: takes the interface down
/// and up again.
///
/// Owns the nodes `wifi-restart/...` of the stand-ins' table. The interface is the one that the
/// host names as the wireless one.
class WifiRestarter : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit WifiRestarter(const QVariantHash& config);

private:
    void on_restart(const CMSetDataRequest& request);

    CMValueNode* m_count;
};
