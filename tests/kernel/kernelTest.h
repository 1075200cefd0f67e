#pragma once

#include "../support/logcapture.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <QUdpSocket>
#include <QtTest>

#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

/// Runs a command line of the shell; true when it exits with 0.
inline bool run(const QString& commandLine)
{
    return QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"), commandLine}) == 0;
}

/// Runs the tests of `Test` in a network namespace of the process's own; skips them without the
/// right to make one.
template <typename Test>
int runInNamespace(int argc, char** argv)
{
    constexpr int skipped = 77;
    if (unshare(CLONE_NEWNET) != 0)
        return skipped;
    QCoreApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// A network namespace beside the process's own: `veth0` here (10.9.0.1) is linked with `veth0`
/// there (10.9.0.2), and nothing travels that no one sends. Both go with the object.
class Neighbour
{
public:
    Neighbour()
        : m_name(QStringLiteral("orva-test-%1").arg(QCoreApplication::applicationPid()))
    {
        const QString quiet =
            QStringLiteral("echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6");
        m_complete =
            ::run(QStringLiteral("ip netns add ") + m_name) && ::run(quiet) && run(quiet) && link();
        m_frameSocket = m_complete ? openFrameSocket() : -1;
    }
    ~Neighbour()
    {
        close(m_frameSocket);
        ::run(QStringLiteral("ip netns delete ") + m_name);
    }

    [[nodiscard]] bool isComplete() const { return m_complete; }

    /// Makes the link; `veth0` must not exist.
    [[nodiscard]] bool link() const
    {
        return ::run(QStringLiteral("ip link add veth0 type veth peer veth0 netns %1 && "
                                    "ip addr add 10.9.0.1/24 dev veth0 && ip link set veth0 up")
                         .arg(m_name)) &&
               run(QStringLiteral("ip addr add 10.9.0.2/24 dev veth0 && ip link set veth0 up"));
    }

    /// Sends one packet that is not answered.
    [[nodiscard]] static bool send()
    {
        return QUdpSocket().writeDatagram("x", 1, QHostAddress(QStringLiteral("10.9.0.255")),
                                          4000) == 1;
    }

    /// Sends a packet that is answered.
    [[nodiscard]] static bool exchange()
    {
        return ::run(QStringLiteral("ping -q -c1 -W1 10.9.0.2 >/dev/null"));
    }

    /// Runs a command line of the shell in the neighbour's namespace.
    [[nodiscard]] bool run(const QString& commandLine) const
    {
        return ::run(QStringLiteral("ip netns exec %1 sh -c '%2'").arg(m_name, commandLine));
    }

    /// A socket on the neighbour's end of the link, which sends whole frames; -1 on failure.
    [[nodiscard]] int frameSocket() const { return m_frameSocket; }

private:
    Q_DISABLE_COPY(Neighbour)

    [[nodiscard]] int openFrameSocket() const
    {
        const int own = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        const int there = open(qPrintable(QStringLiteral("/run/netns/") + m_name), O_RDONLY);
        setns(there, CLONE_NEWNET);
        const int frames = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_ifindex = static_cast<int>(if_nametoindex("veth0"));
        const bool bound = bind(frames, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        setns(own, CLONE_NEWNET);
        close(there);
        close(own);
        return bound ? frames : -1;
    }

    QString m_name;
    int m_frameSocket = -1;
    bool m_complete = false;
};
