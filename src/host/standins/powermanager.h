#pragma once

#include "core/orva.h"

/// Stands in for the device's power manager: switches nothing and shows what was asked of it.
///
/// Owns the activate nodes `power/module/register`, `power/resource/request` and
/// `power/target/request`, which take the bare records of the power manager. What they brought
/// shows on `power/modules` (rows: the modules that made themselves known), `power/requests` (rows:
/// the last 100 resource and target requests in their order, repeats included),
/// `power/resource/wifi` (whether any module holds the Wi-Fi radio) and `power/target` (the target
/// that was last requested, 0 before).
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
