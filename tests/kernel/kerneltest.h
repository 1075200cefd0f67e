// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "literals.h"
#include "logcapture.h"

#include <QCoreApplication>
#include <QProcess>
#include <QUdpSocket>
#include <QtTest>

#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

/// Runs a command line of the shell; true when it exits with 0.
inline bool run(const QByteArray& commandLine)
{
    return QProcess::execute("sh"_s, {"-c"_s, QString::fromUtf8(commandLine)}) == 0;
}

/// Runs the tests of `Test` in a network namespace of the process's own; skips them without the
/// right to make one.
#define ORVA_KERNEL_TEST_MAIN(Test)                     \
    int main(int argc, char** argv)                     \
    {                                                   \
        if (unshare(CLONE_NEWNET) != 0)                 \
            return 77;                                  \
        const QCoreApplication application(argc, argv); \
        Test test;                                      \
        return QTest::qExec(&test, argc, argv);         \
    }

/// A network namespace beside the process's own: `veth0` here (10.9.0.1) is linked with `veth0`
/// there (10.9.0.2), and nothing travels that no one sends. Both go with the object.
class Neighbour
{
public:
    Neighbour()
        : m_name("orva-test-" + QByteArray::number(QCoreApplication::applicationPid()))
    {
        const QByteArray quiet = "echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6";
        if (::run("ip netns add " + m_name) && ::run(quiet) && run(quiet) && link())
            m_frameSocket = openFrameSocket();
    }
    ~Neighbour()
    {
        close(m_frameSocket);
        ::run("ip netns delete " + m_name);
    }
    Q_DISABLE_COPY(Neighbour)

    [[nodiscard]] bool isComplete() const { return m_frameSocket >= 0; }
    /// A socket on the neighbour's end of the link, which sends whole frames; -1 on failure.
    [[nodiscard]] int frameSocket() const { return m_frameSocket; }

    /// Makes the link; `veth0` must not exist.
    [[nodiscard]] bool link() const
    {
        return ::run("ip link add veth0 type veth peer veth0 netns " + m_name +
                     " && ip addr add 10.9.0.1/24 dev veth0 && ip link set veth0 up") &&
               run("ip addr add 10.9.0.2/24 dev veth0 && ip link set veth0 up");
    }

    /// Sends one packet that is not answered.
    [[nodiscard]] static bool send()
    {
        const QHostAddress everyone("10.9.0.255"_s);
        return QUdpSocket().writeDatagram("x", 1, everyone, 4000) == 1;
    }

    /// Sends a packet that is answered.
    [[nodiscard]] static bool exchange() { return ::run("ping -q -c1 -W1 10.9.0.2 >/dev/null"); }

    /// Runs a command line of the shell in the neighbour's namespace.
    [[nodiscard]] bool run(const QByteArray& commandLine) const
    {
        return ::run("ip netns exec " + m_name + " sh -c '" + commandLine + "'");
    }

private:
    [[nodiscard]] int openFrameSocket() const
    {
        const int own = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        const int there = open("/run/netns/" + m_name, O_RDONLY | O_CLOEXEC);
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

    QByteArray m_name;
    int m_frameSocket = -1;
};
