#include "magicPacket.h"
#include "stuckLink.h"
#include "wakeFilter.h"

#include <QRandomGenerator>
#include <QtTest>

#include <vector>

#include <sys/socket.h>
#include <unistd.h>

using Verdict = StuckLinkVerdict;
Q_DECLARE_METATYPE(StuckLinkVerdict)
Q_DECLARE_METATYPE(StuckLinkState)
Q_DECLARE_METATYPE(LinkSample)

namespace {

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
    void judges_data();
    void judges();
    void buildsThePattern_data();
    void buildsThePattern();
    void checksThePacket_data();
    void checksThePacket();
    void filtersAsItChecks();
};

void TestRules::judges_data()
{
    QTest::addColumn<StuckLinkState>("state");
    QTest::addColumn<LinkSample>("sample");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<StuckLinkVerdict>("verdict");
    QTest::addColumn<StuckLinkState>("next");

    const StuckLinkState before{100, 50, 2};
    const auto row = [&](const char* name, LinkSample sample, int threshold, Verdict verdict,
                         StuckLinkState next) {
        QTest::newRow(name) << before << sample << threshold << verdict << next;
    };
    row("gone", {false, false, 0, 0}, 3, Verdict::NoInterface, {100, 50, 0});
    row("no carrier", {true, false, 101, 50}, 3, Verdict::NotConnected, {100, 50, 0});
    row("no tx", {true, true, 0, 51}, 3, Verdict::NoCounters, before);
    row("no rx", {true, true, 101, 0}, 3, Verdict::NoCounters, before);
    row("tx fell", {true, true, 99, 51}, 3, Verdict::CountersDecreased, {0, 0, 2});
    row("rx fell", {true, true, 101, 49}, 3, Verdict::CountersDecreased, {0, 0, 2});
    row("idle", {true, true, 100, 50}, 3, Verdict::Active, {100, 50, 0});
    row("only receives", {true, true, 100, 51}, 3, Verdict::Active, {100, 51, 0});
    row("both", {true, true, 101, 51}, 3, Verdict::Active, {101, 51, 0});
    row("stuck", {true, true, 101, 50}, 4, Verdict::Stuck, {101, 50, 3});
    row("stuck too long", {true, true, 101, 50}, 3, Verdict::Restart, {101, 50, 0});
    row("threshold 0", {true, true, 101, 50}, 0, Verdict::Restart, {101, 50, 0});
    row("threshold -1", {true, true, 101, 50}, -1, Verdict::Stuck, {101, 50, 3});

    const quint32 most = 0xFFFFFFFF;
    const LinkSample stuck{true, true, 101, 50};
    QTest::newRow("-1 is not the largest count") << StuckLinkState{100, 50, most - 1} << stuck << -1
                                                 << Verdict::Stuck << StuckLinkState{101, 50, most};
    QTest::newRow("first sample") << StuckLinkState{} << LinkSample{true, true, 7, 3} << 0
                                  << Verdict::Active << StuckLinkState{7, 3, 0};
    QTest::newRow("after a decrease") << StuckLinkState{0, 0, 2} << LinkSample{true, true, 7, 3}
                                      << 3 << Verdict::Active << StuckLinkState{7, 3, 0};
}

void TestRules::judges()
{
    QFETCH(StuckLinkState, state);
    QFETCH(LinkSample, sample);
    QFETCH(int, threshold);
    QFETCH(StuckLinkState, next);
    const StuckLinkJudgement judgement = judgeSample(state, sample, threshold);
    QTEST(judgement.verdict, "verdict");
    QCOMPARE(judgement.state.lastTxPackets, next.lastTxPackets);
    QCOMPARE(judgement.state.lastRxPackets, next.lastRxPackets);
    QCOMPARE(judgement.state.stuckCount, next.stuckCount);
}

void TestRules::buildsThePattern_data()
{
    QTest::addColumn<QString>("mac");
    QTest::addColumn<QByteArray>("address");
    const QByteArray address = QByteArray::fromHex("00112233aabb");
    QTest::newRow("colons") << QStringLiteral("00:11:22:33:AA:BB") << address;
    QTest::newRow("dashes") << QStringLiteral("00-11-22-33-aa-bb") << address;
    QTest::newRow("bare") << QStringLiteral("00112233aabb") << address;
    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("five bytes") << QStringLiteral("0011223344") << QByteArray();
    QTest::newRow("seven bytes") << QStringLiteral("00:11:22:33:44:55:66") << QByteArray();
    QTest::newRow("not hexadecimal") << QStringLiteral("no address") << QByteArray();
}

void TestRules::buildsThePattern()
{
    QFETCH(QString, mac);
    QFETCH(QByteArray, address);
    const std::optional<QByteArray> pattern = magicPattern(mac);
    QCOMPARE(pattern.has_value(), !address.isEmpty());
    if (!pattern)
        return;
    QCOMPARE(pattern->size(), 102);
    QCOMPARE(pattern->left(6), QByteArray::fromHex("ffffffffffff"));
    for (int copy = 0; copy < 16; ++copy)
        QCOMPARE(pattern->mid(6 + 6 * copy, 6), address);
}

void TestRules::checksThePacket_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("port 9") << packet(4, 5, 17, 9, 130) << true;
    QTest::newRow("options") << packet(4, 8, 17, 9, 142) << true;
    QTest::newRow("longest header") << packet(4, 15, 17, 9, 162) << true;
    QTest::newRow("ends with the port") << packet(4, 5, 17, 9, 24) << true;
    QTest::newRow("ends inside the port") << packet(4, 5, 17, 9, 23) << false;
    QTest::newRow("port 7") << packet(4, 5, 17, 7, 130) << false;
    QTest::newRow("port 9 * 256") << packet(4, 5, 17, 9 << 8, 130) << false;
    QTest::newRow("port 256 + 9") << packet(4, 5, 17, 256 + 9, 130) << false;
    QTest::newRow("TCP") << packet(4, 5, 6, 9, 130) << false;
    QTest::newRow("version 6") << packet(6, 5, 17, 9, 130) << false;
    QTest::newRow("header only") << packet(4, 5, 17, 9, 20) << false;
    QTest::newRow("one byte") << QByteArray("\x45") << false;
    QTest::newRow("empty") << QByteArray() << false;
    // Without a header length the half-word at offset 2 counts: the total length.
    QTest::newRow("header length 0") << packet(4, 0, 17, 9, 130) << true;
    QByteArray fragment = packet(4, 5, 17, 9, 130);
    fragment[6] = 0x20;
    fragment[7] = 0x10;
    QTest::newRow("later fragment, read as a datagram") << fragment << true;
}

void TestRules::checksThePacket()
{
    QFETCH(QByteArray, bytes);
    QTEST(accepts(bytes), "accepted");
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
        QByteArray bytes(random.bounded(1, 80), '\0');
        random.generate(bytes.begin(), bytes.end());
        if (random.bounded(8) != 0) {
            const int size = bytes.size();
            const int port = oneOf({9, 9, 9, 7, 9 << 8, 256 + 9});
            bytes = packet(oneOf({4, 4, 4, 5, 6}), random.bounded(16), oneOf({17, 17, 17, 6, 1}),
                           port, size);
        }
        QCOMPARE(send(ends[0], bytes.constData(), static_cast<size_t>(bytes.size()), 0),
                 static_cast<ssize_t>(bytes.size()));
        char received[128];
        const bool delivered = recv(ends[1], received, sizeof received, 0) == bytes.size();
        if (delivered != accepts(bytes))
            QFAIL(qPrintable(QStringLiteral("they differ on ") + QLatin1String(bytes.toHex())));
        passed += delivered ? 1 : 0;
    }
    QVERIFY2(passed > 1000 && passed < 19000, "the packets do not exercise both outcomes");
    close(ends[0]);
    close(ends[1]);
}

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
