// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

/// Stands in for the device's power manager: switches nothing and shows what was asked of it.
///
/// Owns the nodes of the power manager, which take its bare records. What they brought shows on the
/// nodes `power/...` of the stand-ins' table.
class PowerManager : public CMNodesWorker
{
    Q_OBJECT
public:
    PowerManager();

private:
    void on_register(const CMSetDataRequest& request);
    void on_resourceRequest(const CMSetDataRequest& request);
    void on_targetRequest(const CMSetDataRequest& request);
    [[nodiscard]] bool isRegistered(const QString& module) const;
    void record(const QString& what, const OrvaHash& request);

    CMListRowsNode* m_modules;
    CMListRowsNode* m_requests;
    CMValueNode* m_wifi;
    CMValueNode* m_target;
    QStringList m_wifiHolders;
    int m_requestCount = 0;
};
