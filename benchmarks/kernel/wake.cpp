// SPDX-License-Identifier: Apache-2.0
// Measures wake-on-LAN on a veth pair of its own (as root): the way from a magic packet on the wire
// to the power manager's request, and what a stream of other packets costs the process that
// listens.
#include "kerneltest.h"
#include "testtree.h"
#include "wake/wakeonlan.h"

#include "figures.h"

#include "network/networkpaths.h"
#include "power/powerrecords.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <csignal>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace {

constexpr int packetsPerMillisecond = 100;
constexpr int loadMilliseconds = 5000;

const QByteArray pattern = QByteArray(6, '\xFF') + QByteArray::fromHex("001122aabbcc").repeated(16);

QByteArray frame(quint16 protocol, const QByteArray& payload)
{
    QByteArray bytes(14, '\xFF');
    bytes[12] = static_cast<char>(protocol >> 8);
    bytes[13] = static_cast<char>(protocol);
    return bytes + payload;
}

QByteArray datagram(int port, const QByteArray& data)
{
    QByteArray packet(28, '\0');
    packet[0] = 0x45;
    packet[9] = 17;
    packet[22] = static_cast<char>(port >> 8);
    packet[23] = static_cast<char>(port);
    return frame(0x0800, packet + data);
}

void measureWay(const char* name, const TestTree& tree, int sender, const QByteArray& bytes)
{
    const auto requests = [&] { return tree.activations(OrvaPowerManagerTargetRequestPath()); };
    std::vector<qint64> times(1000);
    for (qint64& time : times) {
        const int before = requests();
        QElapsedTimer timer;
        timer.start();
        send(sender, bytes.constData(), static_cast<size_t>(bytes.size()), 0);
        while (requests() == before)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        time = timer.nsecsElapsed();
    }
    printPercentiles(name, times);
}

/// Sends in a process of its own, evenly spread, until the time is over.
pid_t startLoad(int sender)
{
    const pid_t child = fork();
    if (child != 0)
        return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const QByteArray bytes = datagram(5000, QByteArray(1400, 'x'));
    timespec next{};
    clock_gettime(CLOCK_MONOTONIC, &next);
    for (int tick = 0; tick < loadMilliseconds; ++tick) {
        for (int i = 0; i < packetsPerMillisecond; ++i)
            send(sender, bytes.constData(), static_cast<size_t>(bytes.size()), 0);
        next.tv_nsec += 1000000;
        next.tv_sec += next.tv_nsec / 1000000000;
        next.tv_nsec %= 1000000000;
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr);
    }
    _exit(0);
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The packet socket of this process that listens to IPv4; -1 without one.
int listeningSocket()
{
    for (int fd = 3; fd < 64; ++fd) {
        sockaddr_ll address{};
        socklen_t size = sizeof address;
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
            address.sll_family == AF_PACKET &&
            address.sll_protocol == qToBigEndian<quint16>(0x0800))
            return fd;
    }
    return -1;
}

/// The number of packets that the socket was handed since the last call.
unsigned deliveredPackets()
{
    tpacket_stats statistics{};
    socklen_t size = sizeof statistics;
    getsockopt(listeningSocket(), SOL_PACKET, PACKET_STATISTICS, &statistics, &size);
    return statistics.tp_packets - statistics.tp_drops;
}

void detachFilter()
{
    const int unused = 0;
    setsockopt(listeningSocket(), SOL_SOCKET, SO_DETACH_FILTER, &unused, sizeof unused);
}

void measureLoad(const char* name, int sender)
{
    deliveredPackets();
    const double before = cpuSeconds();
    QElapsedTimer timer;
    timer.start();
    const pid_t load = startLoad(sender);
    QEventLoop loop;
    QTimer::singleShot(loadMilliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    waitpid(load, nullptr, 0);
    const double seconds = static_cast<double>(timer.elapsed()) / 1000.0;
    std::printf("{\"name\":\"%s\",\"packets_per_s\":%.0f,\"delivered\":%u,\"cpu_percent\":%.1f}\n",
                name, packetsPerMillisecond * loadMilliseconds / seconds, deliveredPackets(),
                100.0 * (cpuSeconds() - before) / seconds);
}

bool enable(TestTree& tree)
{
    const OrvaValue on = json(R"({"bool":true})");
    return outcome(tree, OrvaNetworkWakeOnLanSetEnabledPath(), on) == QLatin1String("/");
}

} // namespace

int main(int argc, char** argv)
{
    if (unshare(CLONE_NEWNET) != 0)
        return 77;
    QCoreApplication application(argc, argv);
    LogCapture::install();
    const Neighbour neighbour;
    if (neighbour.frameSocket() < 0)
        return 1;
    TestTree tree;
    tree.addActivation(OrvaPowerManagerTargetRequestPath());
    tree.addValue(OrvaNetworkStateCurrentMAC())
        ->setValue(json(R"({"string":"00:11:22:AA:BB:CC"})"));
    CMActivateNode::create(tree.nodes(), OrvaNetworkWakeOnLanSetEnabledPath())
        ->setInvoke(new WakeOnLan(&tree), &WakeOnLan::on_setEnabled, Qt::QueuedConnection);
    measureLoad("stream, not listening", neighbour.frameSocket());
    if (!enable(tree))
        return 1;
    measureWay("raw magic packet to request", tree, neighbour.frameSocket(),
               frame(0x0842, pattern));
    measureWay("UDP magic packet to request", tree, neighbour.frameSocket(), datagram(9, pattern));
    measureLoad("stream, filtered", neighbour.frameSocket());
    detachFilter();
    measureLoad("stream, not filtered", neighbour.frameSocket());
    return 0;
}
