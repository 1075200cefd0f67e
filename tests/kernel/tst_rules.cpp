// SPDX-License-Identifier: Apache-2.0
#include "wake/magicpacket.h"
#include "wake/wakefilter.h"
#include "watchdog/stucklink.h"

#include <QRandomGenerator>
#include <QtTest>

#include <vector>

#include <sys/socket.h>

using Verdict = StuckLinkVerdict;

namespace {

bool isJudged(StuckLinkState before, LinkSample sample, int threshold, Verdict verdict,
              StuckLinkState after)
{
    const StuckLinkJudgement judgement = judgeSample(before, sample, threshold);
    return judgement.verdict == verdict && judgement.state.lastTxPackets == after.lastTxPackets &&
           judgement.state.lastRxPackets == after.lastRxPackets &&
           judgement.state.stuckCount == after.stuckCount;
}

bool accepts(const QByteArray& bytes)
{
    // On the heap in its exact size, so that a sanitizer sees a read beyond the end.
    const std::vector<uchar> exact(bytes.begin(), bytes.end());
    return isWakeDatagram(exact.data(), exact.size());
}

} // namespace

class TestRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void judgesSamples()
    {
        const StuckLinkState old{100, 50, 2};
        QVERIFY(isJudged(old, {false, false, 0, 0}, 3, Verdict::NoInterface, {100, 50, 0}));
        QVERIFY(isJudged(old, {true, false, 101, 50}, 3, Verdict::NotConnected, {100, 50, 0}));
        QVERIFY(isJudged(old, {true, true, 0, 51}, 3, Verdict::NoCounters, old));
        QVERIFY(isJudged(old, {true, true, 101, 0}, 3, Verdict::NoCounters, old));
        QVERIFY(isJudged(old, {true, true, 99, 51}, 3, Verdict::CountersDecreased, {0, 0, 2}));
        QVERIFY(isJudged(old, {true, true, 101, 49}, 3, Verdict::CountersDecreased, {0, 0, 2}));
        QVERIFY(isJudged({0, 0, 2}, {true, true, 7, 3}, 3, Verdict::Active, {7, 3, 0}));
        QVERIFY(isJudged(old, {true, true, 100, 50}, 3, Verdict::Active, {100, 50, 0}));
        QVERIFY(isJudged(old, {true, true, 101, 51}, 3, Verdict::Active, {101, 51, 0}));
        QVERIFY(isJudged(old, {true, true, 101, 50}, 4, Verdict::Stuck, {101, 50, 3}));
        QVERIFY(isJudged(old, {true, true, 101, 50}, 3, Verdict::Restart, {101, 50, 0}));
        QVERIFY(isJudged(old, {true, true, 101, 50}, 0, Verdict::Restart, {101, 50, 0}));
        // A negative threshold is no large one either.
        const quint32 most = 0xFFFFFFFF;
        QVERIFY(isJudged({9, 9, most - 1}, {true, true, 10, 9}, -1, Verdict::Stuck, {10, 9, most}));
    }

    void filtersAsItChecks()
    {
        int ends[2];
        QCOMPARE(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
        QVERIFY(attachWakeFilter(ends[1]));
        QRandomGenerator random(20240607);
        int passed = 0;
        for (int round = 0; round < 20000; ++round) {
            // Of few different bytes, so that many packets are right or nearly so.
            QByteArray bytes(random.bounded(1, 80), '\0');
            for (char& byte : bytes)
                byte = "\x00\x09\x11"[random.bounded(3)];
            bytes[0] =
                static_cast<char>((random.bounded(4) == 0 ? 0x60 : 0x40) | random.bounded(16));
            send(ends[0], bytes.constData(), static_cast<size_t>(bytes.size()), 0);
            char received[128];
            const bool delivered = recv(ends[1], received, sizeof received, 0) == bytes.size();
            QVERIFY2(delivered == accepts(bytes), bytes.toHex().constData());
            passed += delivered ? 1 : 0;
        }
        QVERIFY2(passed > 100 && passed < 19900, "the packets do not exercise both outcomes");
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
