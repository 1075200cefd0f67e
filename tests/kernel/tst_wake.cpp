#include "kernelTest.h"
#include "testTree.h"
#include "wakeOnLan.h"

#include <network/networkpaths.h>
#include <power/powerrecords.h>

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int tcp = 6;
constexpr int laterFragment = 0x0010;

const QByteArray pattern = QByteArray(6, '\xFF') + QByteArray::fromHex("001122aabbcc").repeated(16);

/// An IPv4 packet with `words` 32-bit words of header, whose payload begins with both ports.
QByteArray ipv4(int words, int protocol, int port, int fragment, const QByteArray& data)
{
    QByteArray packet(words * 4 + 8, '\0');
    packet[0] = static_cast<char>(0x40 | words);
    packet[6] = static_cast<char>(fragment >> 8);
    packet[7] = static_cast<char>(fragment);
    packet[9] = static_cast<char>(protocol);
    packet[words * 4 + 3] = static_cast<char>(port);
    return packet + data;
}

/// What /proc tells of the packet sockets here that wait for `protocol`, one line each.
QStringList packetSockets(const char* protocol)
{
    QFile table(QStringLiteral("/proc/thread-self/net/packet"));
    if (!table.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(table.readAll())
        .split(QLatin1Char('\n'))
        .filter(QStringLiteral(" %1 ").arg(QLatin1String(protocol)));
}

} // namespace

class TestWake : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete() && m_neighbour.frameSocket() >= 0); }
    void init();
    void cleanup() { m_tree.reset(); }
    void hearsTheSendersInUse();
    void tellsPacketsApart();
    void followsTheAddress();
    void opensAndClosesItsSockets();
    void staysOffWithoutSockets();
    void letsTheKernelDropOtherPackets();

private:
    void setMac(const char* mac);
    void enable(bool on);
    void send(quint16 protocol, const QByteArray& packet) const;
    int wakes();
    [[nodiscard]] int queuedBytes(int atLeast) const;

    LogCapture& m_log = LogCapture::install();
    Neighbour m_neighbour;
    std::unique_ptr<TestTree> m_tree;
    CMValueNode* m_mac = nullptr;
    WakeOnLan* m_wakeOnLan = nullptr;
    int m_counted = 0;
};

void TestWake::init()
{
    m_tree = std::make_unique<TestTree>();
    m_mac = m_tree->addValue(OrvaNetworkStateCurrentMAC());
    m_tree->addActivation(OrvaPowerManagerTargetRequestPath());
    m_wakeOnLan = new WakeOnLan(m_tree.get());
    m_counted = 0;
    m_log.clear();
    QTest::qWait(0);
    enable(true);
}

void TestWake::setMac(const char* mac)
{
    m_mac->setValue(json(QStringLiteral(R"({"string":"%1"})").arg(QLatin1String(mac))));
}

void TestWake::enable(bool on)
{
    const OrvaValue value =
        json(on ? QStringLiteral(R"({"bool":true})") : QStringLiteral(R"({"bool":false})"));
    const CMReply<QVariant> reply = m_tree->activate(OrvaNetworkWakeOnLanSetEnabledPath(), value);
    QTRY_VERIFY(reply.isFinished());
    QVERIFY(reply.error().isEmpty());
}

void TestWake::send(quint16 protocol, const QByteArray& packet) const
{
    QByteArray frame(6, '\xFF');
    frame += QByteArray(6, '\0') + static_cast<char>(protocol >> 8) + static_cast<char>(protocol);
    frame += packet;
    QCOMPARE(::send(m_neighbour.frameSocket(), frame.constData(), frame.size(), 0), frame.size());
}

/// How often the device was woken by what was sent since the last call. A last, good frame of its
/// own tells that everything has arrived.
int TestWake::wakes()
{
    const auto count = [this] { return m_tree->activations(OrvaPowerManagerTargetRequestPath()); };
    send(0x0842, pattern);
    const int counted = m_counted;
    if (!QTest::qWaitFor([&] { return count() > counted; }))
        return -1;
    QTest::qWait(5);
    m_counted = count();
    return m_counted - counted - 1;
}

void TestWake::hearsTheSendersInUse()
{
    setMac("00:11:22:AA:BB:CC");
    const auto wakesBy = [this](const char* sender) {
        return m_neighbour.run(QLatin1String(sender) + QStringLiteral(" >/dev/null")) ? wakes()
                                                                                      : -1;
    };
    QCOMPARE(wakesBy("etherwake -i veth0 00:11:22:aa:bb:cc"), 1);
    QCOMPARE(wakesBy("etherwake -i veth0 00:11:22:aa:bb:cd"), 0);
    QCOMPARE(wakesBy("wakeonlan -i 10.9.0.255 00:11:22:aa:bb:cc"), 1);
    QCOMPARE(wakesBy("wakeonlan -i 10.9.0.255 -p 7 00:11:22:aa:bb:cc"), 0);
}

void TestWake::tellsPacketsApart()
{
    setMac("00:11:22:AA:BB:CC");
    const auto wakesBy = [this](quint16 protocol, const QByteArray& packet) {
        send(protocol, packet);
        return wakes();
    };
    QCOMPARE(wakesBy(0x0842, pattern + "rest"), 1);
    QCOMPARE(wakesBy(0x0842, QByteArray(300, '\xFF') + pattern + "rest"), 1);
    QCOMPARE(wakesBy(0x0842, QByteArray(1398, 'x') + pattern), 1);
    QCOMPARE(wakesBy(0x0842, pattern.chopped(1)), 0);
    QCOMPARE(wakesBy(0x0800, ipv4(5, 17, 9, 0, pattern)), 1);
    QCOMPARE(wakesBy(0x0800, ipv4(15, 17, 9, 0, pattern)), 1);
    QCOMPARE(wakesBy(0x0800, ipv4(5, 17, 9, laterFragment, pattern)), 1);
    QCOMPARE(wakesBy(0x0800, ipv4(5, 17, 7, 0, pattern)), 0);
    QCOMPARE(wakesBy(0x0800, ipv4(5, tcp, 9, 0, pattern)), 0);
    QCOMPARE(wakesBy(0x0800, ipv4(5, 17, 9, 0, {}).left(9)), 0);
}

void TestWake::followsTheAddress()
{
    const auto sendThenSet = [this](const char* mac) {
        send(0x0842, pattern);
        send(0x0800, ipv4(5, 17, 9, 0, pattern));
        QTest::qWait(50);
        setMac(mac);
    };
    sendThenSet("02:00:00:00:00:01");
    sendThenSet("00:11:22:AA:BB:CC");
    QCOMPARE(wakes(), 0);
    sendThenSet("0011223344");
    QCOMPARE(wakes(), 2);
    QCOMPARE(m_log.count(QStringLiteral("Configuring WOL matcher to ")), 2);
}

void TestWake::opensAndClosesItsSockets()
{
    setMac("00:11:22:AA:BB:CC");
    enable(true);
    QCOMPARE(packetSockets("0842").size(), 1);
    QCOMPARE(packetSockets("0800").size(), 1);
    QCOMPARE(wakes(), 0);
    enable(false);
    enable(false);
    QCOMPARE(packetSockets("0842") + packetSockets("0800"), QStringList());
    send(0x0842, pattern);
    enable(true);
    QCOMPARE(wakes(), 0);
    delete m_wakeOnLan;
    QCOMPARE(packetSockets("0842") + packetSockets("0800"), QStringList());
}

void TestWake::staysOffWithoutSockets()
{
    setMac("00:11:22:AA:BB:CC");
    const auto enableIn = [this](const auto& enterBadTimes, const auto& leaveThem) {
        enable(false);
        enterBadTimes();
        enable(true);
        leaveThem();
        return packetSockets("0842").isEmpty() && packetSockets("0800").isEmpty();
    };
    QVERIFY(enableIn([] { seteuid(65534); }, [] { seteuid(0); }));
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    rlimit exhausted = usual;
    const auto exhaust = [&] {
        const int next = dup(0);
        close(next);
        exhausted.rlim_cur = static_cast<rlim_t>(next);
        setrlimit(RLIMIT_NOFILE, &exhausted);
    };
    QVERIFY(enableIn(exhaust, [&] { setrlimit(RLIMIT_NOFILE, &usual); }));
    enable(true);
    QCOMPARE(wakes(), 0);
}

/// How much waits in the IPv4 socket, once it is `atLeast` bytes or does not come.
int TestWake::queuedBytes(int atLeast) const
{
    int bytes = 0;
    for (int attempt = 0; attempt < 100 && bytes < atLeast; ++attempt) {
        const QString line = packetSockets("0800").value(0).simplified();
        bytes = line.section(QLatin1Char(' '), 6, 6).toInt();
        QThread::msleep(1);
    }
    return bytes;
}

void TestWake::letsTheKernelDropOtherPackets()
{
    // The event loop does not run here, so that what the kernel delivers stays in the queue.
    send(0x0800, ipv4(5, 17, 9, 0, {}));
    const int one = queuedBytes(1);
    QVERIFY(one > 0);
    for (int port = 10; port < 60; ++port)
        send(0x0800, ipv4(5, 17, port, 0, {}));
    send(0x0800, ipv4(5, 17, 9, 0, {}));
    QCOMPARE(queuedBytes(2 * one), 2 * one);
}

int main(int argc, char** argv)
{
    return runInNamespace<TestWake>(argc, argv);
}
#include "tst_wake.moc"
