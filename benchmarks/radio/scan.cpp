// SPDX-License-Identifier: Apache-2.0
// From a scan request to its answer over the bus, with a radio that finds its networks at once; and
// what a thousand requests of a hundred clients take that meet in one scan. Clients and worker
// share one thread, so that the figures are the work of both.

#include "hostcontrol.h"
#include "network/networkpaths.h"
#include "privatebus.h"
#include "workerfixture.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <algorithm>
#include <cstdio>

namespace {

QVector<OrvaNetworkScanResult> networks(int count)
{
    QVector<OrvaNetworkScanResult> results(count);
    for (int i = 0; i < count; ++i) {
        results[i].setSsid(QStringLiteral("network %1").arg(i));
        results[i].setBssid(QStringLiteral("02:00:00:00:%1:%2").arg(i / 256).arg(i % 256));
        results[i].setChannel(1 + i % 13);
        results[i].setFrequency(2412 + 5 * (i % 13));
        results[i].setSignal(-40 - i % 50);
        results[i].setEncryption(OrvaNetworkProfileWirelessEncryption::WpaPsk);
    }
    return results;
}

/// Resident memory in KiB, now or at its peak.
long memory(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines)
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field)) + 1).simplified().split(' ').first().toLong();
    return 0;
}

/// Asks for `requests` scans at once and waits for their answers; in milliseconds.
double ask(const QVector<QDBusConnection>& clients, int requests)
{
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.orva.Host1"), QStringLiteral("/org/orva/Host1"),
        QStringLiteral("org.orva.Host1"), QStringLiteral("Invoke"));
    call << OrvaNetworkScanPath().toString() << QVariantMap();
    QElapsedTimer timer;
    timer.start();
    int open = requests;
    QEventLoop loop;
    QObject context;
    for (int i = 0; i < requests; ++i) {
        auto* watcher =
            new QDBusPendingCallWatcher(clients.at(i % clients.size()).asyncCall(call), &context);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &loop, [&] {
            if (watcher->isError())
                qFatal("%s", qPrintable(watcher->error().message()));
            if (--open == 0)
                loop.quit();
        });
    }
    loop.exec();
    return double(timer.nsecsElapsed()) / 1e6;
}

void measure(WorkerFixture& fixture, const QVector<QDBusConnection>& clients, int results,
             int requests)
{
    // Long enough for all to ask while the scan runs.
    const int scanMs = requests > 1 ? 1000 : 0;
    const auto found = networks(results);
    fixture.backend->onCommand = [&](const QString&) {
        QTimer::singleShot(scanMs, Qt::PreciseTimer, fixture.backend,
                           [&] { Q_EMIT fixture.backend->ScanResults(found); });
    };
    fixture.backend->commands.clear();
    const long before = memory("VmRSS:");
    std::vector<double> samples;
    const int rounds = requests > 1 || results > 1000 ? 5 : 50;
    for (int i = 0; i < rounds; ++i)
        samples.push_back(ask(clients, requests) - scanMs);
    std::sort(samples.begin(), samples.end());
    std::printf("{\"what\": \"scan\", \"results\": %d, \"requests\": %d, \"p50_ms\": %.2f, "
                "\"worst_ms\": %.2f, \"backend_scans_each\": %d, \"peak_growth_kib\": %ld}\n",
                results, requests, samples.at(samples.size() / 2), samples.back(),
                int(fixture.backend->commands.size()) / rounds, memory("VmHWM:") - before);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    PrivateBus bus;
    if (!bus.start())
        return 1;
    WorkerFixture fixture;
    HostControl control(fixture.root, QDBusConnection::systemBus());
    const auto started = control.start();
    if (!started)
        qFatal("%s", qPrintable(started.why()));
    QVector<QDBusConnection> clients;
    for (int i = 0; i < 100; ++i)
        clients << bus.connection(QStringLiteral("client%1").arg(i));
    measure(fixture, clients, 10, 1000);
    for (const int results : {10, 1000, 5000})
        measure(fixture, clients.mid(0, 1), results, 1);
    return 0;
}
