// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

/// One look at the watched interface.
struct LinkSample
{
    bool exists = false;   ///< the kernel knows the interface; the rest counts only then
    bool lowerUp = false;  ///< it has a carrier
    quint64 txPackets = 0; ///< packets sent since the interface was created
    quint64 rxPackets = 0; ///< packets received since then
};

/// What the watchdog remembers from one sample to the next.
struct StuckLinkState
{
    quint64 lastTxPackets = 0;
    quint64 lastRxPackets = 0;
    quint32 stuckCount = 0; ///< samples in a row that sent and did not receive
};

/// What a sample says about the link.
enum class StuckLinkVerdict {
    NoInterface,       ///< the interface is gone; the count starts again
    NotConnected,      ///< it has no carrier; the count starts again
    NoCounters,        ///< a counter reads 0; nothing is concluded and nothing changes
    CountersDecreased, ///< the interface was re-created; the next sample counts as active
    Active,            ///< it receives, or does not send; the count starts again
    Stuck,             ///< it sent and did not receive; the threshold is not reached
    Restart,           ///< it sent and did not receive for too long; the count starts again
};

/// A verdict and the state to judge the next sample with.
struct StuckLinkJudgement
{
    StuckLinkVerdict verdict;
    StuckLinkState state;
};

/// Judges `sample` after what `state` remembers.
///
/// `threshold` is the number of stuck samples in a row that asks for a restart: 0 acts on the first
/// one, a negative number never acts.
[[nodiscard]] StuckLinkJudgement judgeSample(StuckLinkState state, const LinkSample& sample,
                                             qint32 threshold);
