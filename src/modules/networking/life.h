// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

/// The state of the network manager between a start and a stop.
class NetworkingLife
{
    Q_GADGET
public:
    enum Value : qint32 {
        /// Not started, and no shutdown is under way: nothing is applied, and neither a profile nor
        /// a soft AP is taken. The state after the construction.
        Stopped,
        /// Started, and no shutdown is under way: the profile in use is applied.
        Started,
        /// Still started, inside the call that takes everything down: nothing is configured any
        /// more, lest a link that goes down is shown as connecting again. It lasts as long as the
        /// stop.
        Stopping,
        /// Started, and a shutdown is under way: everything runs but is shown as in between, until
        /// the shutdown's timer stops it or a start calls it off.
        ShuttingDown,
        /// Not started, and a shutdown is under way all the same: its timer stops once more what is
        /// stopped already.
        ShuttingDownStopped
    };
    Q_ENUM(Value)

    /// True if profiles and soft APs are taken.
    [[nodiscard]] bool isStarted() const
    {
        return m_value == Started || m_value == Stopping || m_value == ShuttingDown;
    }
    /// True if a shutdown is under way.
    [[nodiscard]] bool isShuttingDown() const
    {
        return m_value == ShuttingDown || m_value == ShuttingDownStopped;
    }
    /// True if the profile in use holds.
    [[nodiscard]] bool isConfigured() const
    {
        return m_value == Started || m_value == ShuttingDown;
    }
    ORVA_ENUM(NetworkingLife);
};
