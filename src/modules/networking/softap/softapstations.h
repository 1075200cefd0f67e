// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/nodes/cmvaluenode.h"

class Networking_LowLevel;

/// The stations that are on the soft access points, by their hardware addresses in capitals, as
/// their node shows them.
class SoftApStations : public QObject
{
    Q_OBJECT
public:
    /// `node` must outlive this object.
    SoftApStations(const Networking_LowLevel& backend, CMValueNode* node);

    /// An access point came up or went down, and has no stations yet or any more.
    void clear();

public Q_SLOTS:
    void on_lowlevel_StationConnected(const QString& mac);
    void on_lowlevel_StationDisconnected(const QString& mac);

private:
    CMValueNode* const m_connectedStationsNode;
};
