// SPDX-License-Identifier: Apache-2.0
#include "watchdog/stucklink.h"

namespace {

bool reaches(quint32 count, qint32 threshold)
{
    // A negative threshold widens to a number that no count reaches.
    return quint64{count} >= static_cast<quint64>(qint64{threshold});
}

} // namespace

StuckLinkJudgement judgeSample(StuckLinkState state, const LinkSample& sample, qint32 threshold)
{
    if (!sample.exists || !sample.lowerUp) {
        state.stuckCount = 0;
        return {sample.exists ? StuckLinkVerdict::NotConnected : StuckLinkVerdict::NoInterface,
                state};
    }
    if (sample.txPackets == 0 || sample.rxPackets == 0)
        return {StuckLinkVerdict::NoCounters, state};
    if (sample.txPackets < state.lastTxPackets || sample.rxPackets < state.lastRxPackets)
        return {StuckLinkVerdict::CountersDecreased, {0, 0, state.stuckCount}};

    const bool sent = sample.txPackets != state.lastTxPackets;
    const bool received = sample.rxPackets != state.lastRxPackets;
    const StuckLinkState next{sample.txPackets, sample.rxPackets, 0};
    if (!sent || received)
        return {StuckLinkVerdict::Active, next};

    const quint32 count = state.stuckCount + 1;
    if (reaches(count, threshold))
        return {StuckLinkVerdict::Restart, next};
    return {StuckLinkVerdict::Stuck, {next.lastTxPackets, next.lastRxPackets, count}};
}
