#include "magicPacket.h"
#include "stuckLink.h"
#include "wakeFilter.h"

#include <QRandomGenerator>
#include <QtTest>

#include <vector>

#include <sys/socket.h>

using Verdict = StuckLinkVerdict;

namespace {

constexpr quint32 most = 0xFFFFFFFF;

bool isJudged(StuckLinkState before, LinkSample sample, int threshold, Verdict verdict,
              StuckLinkState after)
{
    const StuckLinkJudgement judgement = judgeSample(before, sample, threshold);
    return judgement.verdict == verdict && judgement.state.lastTxPackets == after.lastTxPackets &&
           judgement.state.lastRxPackets == after.lastRxPackets &&
           judgement.state.stuckCount == after.stuckCount;
}

/// An IPv4 packet of `size` bytes with `words` 32-bit words of header.
QByteArray packet(int version, int words, int protocol, int port, int size)
{
    QByteArray bytes(qMax(size, 64), '\0');
    bytes[0] = static_cast<char>(version << 4 | words);
    bytes[9] = static_cast<char>(protocol);
    bytes[words * 4 + 2] = static_cast<char>(port >> 8);
    bytes[words * 4 + 3] = static_cast<char>(port);
    return bytes.left(size);
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
    void judgesSamples();
    void buildsThePattern();
    void checksThePacket();
    void filtersAsItChecks();
};

void TestRules::judgesSamples()
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
    QVERIFY(
        isJudged({100, 50, most - 1}, {true, true, 101, 50}, -1, Verdict::Stuck, {101, 50, most}));
}

void TestRules::buildsThePattern()
{
    const QByteArray address = QByteArray::fromHex("00112233aabb");
    const QByteArray pattern = QByteArray::fromHex("ffffffffffff") + address.repeated(16);
    QCOMPARE(magicPattern(QStringLiteral("00:11:22:33:AA:BB")), pattern);
    QCOMPARE(magicPattern(QStringLiteral("00112233aabb")), pattern);
    for (const char* wrong : {"", "0011223344", "00:11:22:33:44:55:66", "no address"})
        QVERIFY(!magicPattern(QLatin1String(wrong)));
}

void TestRules::checksThePacket()
{
    QVERIFY(accepts(packet(4, 5, 17, 9, 130)));
    QVERIFY(accepts(packet(4, 15, 17, 9, 162)));
    QVERIFY(accepts(packet(4, 5, 17, 9, 24)));
    QVERIFY(!accepts(packet(4, 5, 17, 9, 23)));
    QVERIFY(!accepts(packet(4, 5, 17, 9 << 8, 130)));
    QVERIFY(!accepts(packet(4, 5, 17, 256 + 9, 130)));
    QVERIFY(!accepts(packet(4, 5, 6, 9, 130)));
    QVERIFY(!accepts(packet(6, 5, 17, 9, 130)));
    QVERIFY(!accepts(QByteArray()));
    // Without a header length the half-word at offset 2 counts: the total length.
    QVERIFY(accepts(packet(4, 0, 17, 9, 130)));
}

void TestRules::filtersAsItChecks()
{
    int ends[2];
    QCOMPARE(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
    QVERIFY(attachWakeFilter(ends[1]));
    QRandomGenerator random(20240607);
    const auto oneOf = [&](std::initializer_list<int> values) {
        return *(values.begin() + random.bounded(static_cast<int>(values.size())));
    };
    int passed = 0;
    for (int round = 0; round < 20000; ++round) {
        const int port = oneOf({9, 9, 9, 7, 9 << 8, 256 + 9});
        const QByteArray bytes = packet(oneOf({4, 4, 4, 5, 6}), random.bounded(16),
                                        oneOf({17, 17, 17, 6, 1}), port, random.bounded(1, 80));
        send(ends[0], bytes.constData(), static_cast<size_t>(bytes.size()), 0);
        char received[128];
        const bool delivered = recv(ends[1], received, sizeof received, 0) == bytes.size();
        QVERIFY2(delivered == accepts(bytes), bytes.toHex().constData());
        passed += delivered ? 1 : 0;
    }
    QVERIFY2(passed > 1000 && passed < 19000, "the packets do not exercise both outcomes");
}

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
