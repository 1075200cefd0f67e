#include "kernelTest.h"
#include "netlinkInfo.h"

#include <csignal>

#include <malloc.h>
#include <netlink/route/link.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

class TestNetlink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete()); }
    void readsTheKernelsCounters();
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
    constexpr quint64 unansweredBytes = 14 + 20 + 8 + 1;
    QVERIFY(Neighbour::exchange());
    NetLinkInfo info;
    const NetLinkInterface before = info.getInterface(QStringLiteral("veth0"));
    QVERIFY(Neighbour::send() && Neighbour::send());
    QVERIFY(m_neighbour.run(QStringLiteral("wakeonlan -i 10.9.0.255 00:11:22:aa:bb:cc >&2")));
    const NetLinkInterface after = info.getInterface(QStringLiteral("veth0"));
    QCOMPARE(after.getTxPackets() - before.getTxPackets(), quint64{2});
    QCOMPARE(after.getTxBytes() - before.getTxBytes(), 2 * unansweredBytes);
    QCOMPARE(after.getRxPackets() - before.getRxPackets(), quint64{1});
    QCOMPARE(after.getRxBytes() - before.getRxBytes(), quint64{14 + 20 + 8 + 102});
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
