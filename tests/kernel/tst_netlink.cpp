#include "kernelTest.h"
#include "netlinkInfo.h"

#include <csignal>

#include <malloc.h>
#include <netlink/route/link.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The counters that /proc/net/dev shows for an interface: bytes and packets received and sent.
QVector<quint64> countersOf(const char* name)
{
    QFile table(QStringLiteral("/proc/thread-self/net/dev"));
    if (!table.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : table.readAll().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.value(0) == QByteArray(name) + ':')
            return {words[1].toULongLong(), words[2].toULongLong(), words[9].toULongLong(),
                    words[10].toULongLong()};
    }
    return {};
}

} // namespace

class TestNetlink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete()); }
    void readsTheKernelsCounters();
    void seesTheCarrier();
    void failsOnUnknownInterfacesAndRecovers();
    void sharesTheLinkByReferences();
    void diesOnReadingAnInvalidInterface();
    void failsWithoutADescriptor();
    void keepsNoMemoryOfItsSamples();

private:
    LogCapture& m_log = LogCapture::install();
    Neighbour m_neighbour;
};

void TestNetlink::readsTheKernelsCounters()
{
    QVERIFY(Neighbour::exchange() && Neighbour::send());

    NetLinkInfo info;
    const NetLinkInterface veth = info.getInterface(QStringLiteral("veth0"));
    QVERIFY(veth.isValid());
    const QVector<quint64> read{veth.getRxBytes(), veth.getRxPackets(), veth.getTxBytes(),
                                veth.getTxPackets()};
    QCOMPARE(read, countersOf("veth0"));
    QCOMPARE(QSet<quint64>(read.begin(), read.end()).size(), 4);
}

void TestNetlink::seesTheCarrier()
{
    NetLinkInfo info;
    QVERIFY(info.getInterface(QStringLiteral("veth0")).isLowerUp());
    QVERIFY(m_neighbour.run(QStringLiteral("ip link set veth0 down")));
    QVERIFY(!info.getInterface(QStringLiteral("veth0")).isLowerUp());
    QVERIFY(m_neighbour.run(QStringLiteral("ip link set veth0 up")));
    QVERIFY(info.getInterface(QStringLiteral("veth0")).isLowerUp());
}

void TestNetlink::failsOnUnknownInterfacesAndRecovers()
{
    NetLinkInfo info;
    for (const QString& name : {QStringLiteral("wlan9"), QString(), QString(300, QLatin1Char('x')),
                                QStringLiteral("schön")}) {
        m_log.clear();
        QVERIFY(!info.getInterface(name).isValid());
        const QString line =
            QStringLiteral("Couldn't get details for interface %1 from kernel: ").arg(name);
        QCOMPARE(m_log.count(line), 1);
        QVERIFY(info.getInterface(QStringLiteral("veth0")).isValid());
    }
}

void TestNetlink::sharesTheLinkByReferences()
{
    rtnl_link* link = rtnl_link_alloc();
    nl_object_get(OBJ_CAST(link));
    const auto references = [link] { return nl_object_get_refcnt(OBJ_CAST(link)); };
    {
        NetLinkInterface first(link);
        NetLinkInterface copy(first);
        NetLinkInterface assigned;
        assigned = copy;
        QCOMPARE(references(), 4);
        assigned = std::move(copy);
        QVERIFY(assigned.isValid() && !copy.isValid());
        const NetLinkInterface moved(std::move(first));
        QVERIFY(moved.isValid() && !first.isValid());
        QCOMPARE(references(), 3);
    }
    QCOMPARE(references(), 1);
    rtnl_link_put(link);
}

void TestNetlink::diesOnReadingAnInvalidInterface()
{
    const pid_t child = fork();
    if (child == 0) {
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        std::signal(SIGABRT, SIG_DFL);
        _exit(NetLinkInterface().isLowerUp() ? 1 : 2);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
}

void TestNetlink::failsWithoutADescriptor()
{
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{0, usual.rlim_max};
    m_log.clear();
    setrlimit(RLIMIT_NOFILE, &none);
    NetLinkInfo info;
    setrlimit(RLIMIT_NOFILE, &usual);
    QCOMPARE(m_log.count(QStringLiteral("Couldn't connect netlink socket: ")), 1);
    QVERIFY(!info.getInterface(QStringLiteral("veth0")).isValid());
}

void TestNetlink::keepsNoMemoryOfItsSamples()
{
    NetLinkInfo info;
    const auto sample = [&info](int times) {
        bool valid = true;
        for (int i = 0; i < times; ++i)
            valid = info.getInterface(QStringLiteral("veth0")).isValid() && valid;
        return valid;
    };
    QVERIFY(sample(100));
    const size_t before = mallinfo2().uordblks;
    QVERIFY(sample(10000));
    QVERIFY(mallinfo2().uordblks < before + 4096);
}

int main(int argc, char** argv)
{
    return runInNamespace<TestNetlink>(argc, argv);
}
#include "tst_netlink.moc"
