// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <core/orva.h>
#include <network/networkrecords.h>

#include <QTimer>

/// Tells a person how to reach the device, and opens a soft access point of its own for who sets it
/// up.
///
/// Its nodes: `setup-helper/advice`, one sentence that follows the state of the network,
/// `setup-helper/open`, which opens the access point for a while, and `setup-helper/summary`, a
/// record of its own: whether it is open, why it was refused last, and how many networks the last
/// scan has found.
class SetupHelper : public CMNodesWorker
{
    Q_OBJECT
public:
    explicit SetupHelper(const QVariantHash& config);

    /// The advice for a state of the network.
    [[nodiscard]] static QString adviceFor(const OrvaNetworkInfo& info);

public Q_SLOTS:
    void on_open_req(const CMSetDataRequest& request);

private:
    void countNetworks();
    void publishSummary();

    CMValueNode* m_advice;
    CMValueNode* m_summary;
    CMValueItem m_info;
    QTimer m_open; ///< Runs while the access point is open.
    QString m_refusal;
    int m_networks = 0;
};
