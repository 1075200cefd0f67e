// SPDX-License-Identifier: Apache-2.0
#include "kerneltest.h"
#include "testtree.h"
#include "wake/wakeonlan.h"

#include "network/networkpaths.h"
#include "power/powerrecords.h"

namespace {

constexpr int udp = 17;
constexpr int tcp = 6;
constexpr int laterFragment = 0x10;
constexpr const char* either = " 08(00|42) ";

const OrvaValue address = OrvaValue::of("00:11:22:AA:BB:CC"_s);
const QByteArray pattern = QByteArray(6, '\xFF') + QByteArray::fromHex("001122aabbcc").repeated(16);

/// An IPv4 packet with `words` 32-bit words of header, whose payload begins with both ports.
QByteArray ipv4(int words, int protocol, int port, int fragment, const QByteArray& data)
{
    QByteArray packet(words * 4 + 8, '\0');
    packet[0] = static_cast<char>(0x40 | words);
    packet[7] = static_cast<char>(fragment);
    packet[9] = static_cast<char>(protocol);
    packet[words * 4 + 3] = static_cast<char>(port);
    return packet + data;
}

/// The bytes that wait in each packet socket here for one of the EtherTypes `protocols`.
QVector<int> queues(const char* protocols)
{
    QFile table("/proc/thread-self/net/packet"_s);
    table.open(QIODevice::ReadOnly);
    const QStringList lines = QString::fromLatin1(table.readAll()).split(QLatin1Char('\n'));
    QVector<int> bytes;
    for (const QString& line : lines.filter(QRegularExpression(QLatin1String(protocols))))
        bytes << line.simplified().section(QLatin1Char(' '), 6, 6).toInt();
    return bytes;
}

} // namespace

class TestWake : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete()); }
    void init()
    {
        m_tree = std::make_unique<TestTree>();
        m_mac = m_tree->addValue(OrvaNetworkStateCurrentMAC());
        m_tree->addActivation(OrvaPowerManagerTargetRequestPath());
        m_wakeOnLan = new WakeOnLan(m_tree.get());
        CMActivateNode::create(m_tree->nodes(), OrvaNetworkWakeOnLanSetEnabledPath())
            ->setInvoke(m_wakeOnLan, &WakeOnLan::on_setEnabled, Qt::QueuedConnection);
        m_log.clear();
        enable(true);
    }

    void cleanup() { m_tree.reset(); }
    void hearsTheSendersInUse()
    {
        m_mac->setValue(address);
        const auto wakesBy = [this](const QByteArray& sender) {
            return m_neighbour.run(sender + " >/dev/null") ? wakes() : -1;
        };
        QCOMPARE(wakesBy("etherwake -i veth0 00:11:22:aa:bb:cc"), 1);
        QCOMPARE(wakesBy("etherwake -i veth0 00:11:22:aa:bb:cd"), 0);
        QCOMPARE(wakesBy("wakeonlan -i 10.9.0.255 00:11:22:aa:bb:cc"), 1);
        QCOMPARE(wakesBy("wakeonlan -i 10.9.0.255 -p 7 00:11:22:aa:bb:cc"), 0);
    }

    void tellsPacketsApart()
    {
        m_mac->setValue(address);
        const auto wakesBy = [this](quint16 protocol, const QByteArray& packet) {
            send(protocol, packet);
            return wakes();
        };
        QCOMPARE(wakesBy(0x0842, QByteArray(300, '\xFF') + pattern + "rest"), 1);
        QCOMPARE(wakesBy(0x0842, QByteArray(1398, 'x') + pattern), 1);
        QCOMPARE(wakesBy(0x0842, pattern.chopped(1)), 0);
        QCOMPARE(wakesBy(0x0800, ipv4(15, udp, 9, 0, pattern)), 1);
        QCOMPARE(wakesBy(0x0800, ipv4(5, udp, 9, laterFragment, pattern)), 1);
        QCOMPARE(wakesBy(0x0800, ipv4(5, udp, 7, 0, pattern)), 0);
        QCOMPARE(wakesBy(0x0800, ipv4(5, tcp, 9, 0, pattern)), 0);
        QCOMPARE(wakesBy(0x0800, ipv4(5, udp, 9, 0, {}).left(9)), 0);
    }

    void followsTheAddress()
    {
        send(0x0842, pattern);
        send(0x0800, ipv4(5, udp, 9, 0, pattern));
        QTest::qWait(50);
        m_mac->setValue(OrvaValue::of("02:00:00:00:00:01"_s));
        send(0x0842, pattern);
        QTest::qWait(50);
        m_mac->setValue(address);
        for (const auto& none : {"0011223344"_s, "00:11:22:33:44:55:66"_s, "no address"_s, ""_s})
            m_mac->setValue(OrvaValue::of(none));
        QCOMPARE(wakes(), 0);
        QCOMPARE(m_log.count("Configuring WOL matcher to "_s), 2);
    }

    void opensAndClosesItsSockets()
    {
        m_mac->setValue(address);
        enable(true);
        QCOMPARE(queues(either).size(), 2);
        enable(false);
        enable(false);
        QVERIFY(queues(either).isEmpty());
        seteuid(65534);
        enable(true);
        seteuid(0);
        QVERIFY(queues(either).isEmpty());
        send(0x0842, pattern);
        enable(true);
        QCOMPARE(wakes(), 0);
        delete m_wakeOnLan;
        QVERIFY(queues(either).isEmpty());
    }

    void letsTheKernelDropOtherPackets()
    {
        // The event loop does not run here, so that what the kernel delivers stays in the queue.
        const auto fills = [](const char* protocol) {
            for (int attempt = 0; attempt < 1000 && queues(protocol) == QVector<int>{0}; ++attempt)
                QThread::msleep(1);
            return queues(protocol).value(0) > 0;
        };
        send(0x0800, ipv4(5, udp, 7, 0, pattern));
        send(0x0842, pattern);
        QVERIFY(fills(" 0842 "));
        QCOMPARE(queues(" 0800 "), QVector<int>{0});
        send(0x0800, ipv4(5, udp, 9, 0, pattern));
        QVERIFY(fills(" 0800 "));
    }

private:
    void enable(bool on)
    {
        QCOMPARE(outcome(*m_tree, OrvaNetworkWakeOnLanSetEnabledPath(), OrvaValue::of(on)), "/"_s);
    }

    void send(quint16 protocol, const QByteArray& packet) const
    {
        QByteArray frame(12, '\xFF');
        frame +=
            QByteArray(1, static_cast<char>(protocol >> 8)) + static_cast<char>(protocol) + packet;
        QCOMPARE(::send(m_neighbour.frameSocket(), frame.constData(), frame.size(), 0),
                 frame.size());
    }

    /// The number of wake-ups by the frames since the last call. A last, good frame of its own
    /// tells that all have arrived.
    int wakes()
    {
        const CMPath path = OrvaPowerManagerTargetRequestPath();
        send(0x0842, pattern);
        const bool woken = QTest::qWaitFor([&] { return m_tree->activations(path) > 0; });
        QTest::qWait(5);
        return woken ? m_tree->takeActivations(path) - 1 : -1;
    }

    LogCapture& m_log = LogCapture::install();
    Neighbour m_neighbour;
    std::unique_ptr<TestTree> m_tree;
    CMValueNode* m_mac = nullptr;
    WakeOnLan* m_wakeOnLan = nullptr;
};

ORVA_KERNEL_TEST_MAIN(TestWake)
#include "tst_wake.moc"
