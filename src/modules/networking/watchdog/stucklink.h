// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

/// One look at the watched interface.
struct LinkSample
{
    bool exists = false;   ///< The kernel knows the interface; the rest counts only then.
    bool lowerUp = false;  ///< It has a carrier.
    quint64 txPackets = 0; ///< Packets sent since the interface was created.
    quint64 rxPackets = 0; ///< Packets received since then.
};

/// The watchdog's memory from one sample to the next.
struct StuckLinkState
{
    quint64 lastTxPackets = 0;
    quint64 lastRxPackets = 0;
    quint32 stuckCount = 0; ///< Samples in a row in which the link sent and did not receive.
};

/// The verdict of a sample on the link.
enum class StuckLinkVerdict {
    NoInterface,       ///< The interface is gone; the count starts again.
    NotConnected,      ///< It has no carrier; the count starts again.
    NoCounters,        ///< A counter reads 0; nothing is concluded and nothing changes.
    CountersDecreased, ///< The interface was re-created; the next sample counts as active.
    Active,            ///< It received, or did not send; the count starts again.
    Stuck,             ///< It sent and did not receive; the threshold is not reached.
    Restart,           ///< It sent and did not receive for too long; the count starts again.
};

/// A verdict and the state to judge the next sample with.
struct StuckLinkJudgement
{
    StuckLinkVerdict verdict;
    StuckLinkState state;
};

/// Judges `sample` by what `state` remembers.
///
/// `threshold` is the number of stuck samples in a row that asks for a restart: 0 acts on the first
/// one, a negative number never acts.
[[nodiscard]] StuckLinkJudgement judgeSample(StuckLinkState state, const LinkSample& sample,
                                             qint32 threshold);
