// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <core/orva.h>
#include <network/networkrecords.h>

/// Tells a person how to reach the device, and opens a soft access point of its own for who sets it
/// up.
///
/// Its nodes: `setup-helper/advice`, one sentence that follows the state of the network, and
/// `setup-helper/open`, which opens the access point for a minute.
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
    CMValueNode* m_advice;
    CMValueItem m_info;
};
