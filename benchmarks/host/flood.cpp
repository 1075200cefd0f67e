// SPDX-License-Identifier: Apache-2.0
// A bystander's wait for a value while another client of the host that runs on the system bus
// floods it with writes whose answers it does not collect, and its wait for a ping, which the
// host's bus thread answers: the part that the bus itself takes.
//   bench_host_flood

#include "core/orva.h"
#include "network/networkpaths.h"
#include "network/networkrecords.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

struct Flood
{
    const char* what;
    int count;
    int rounds;
    std::function<QDBusMessage(int number)> call;
};

QDBusMessage callTo(const char* method, const CMPath& path)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.orva.Host1"),
                                          QStringLiteral("/org/orva/Host1"),
                                          QStringLiteral("org.orva.Host1"), QLatin1String(method))
           << path.toString();
}

QDBusMessage write(const char* method, const CMPath& path, const OrvaValue& value)
{
    return callTo(method, path) << OrvaPlain::toBus(value.__hash());
}

QDBusMessage readState()
{
    return callTo("GetValue", OrvaNetworkInfoPath());
}

QDBusMessage setSetting(int number)
{
    return write("SetValue", OrvaNetworkMaxAuthFailuresSettingsPath(), OrvaValue::of(number + 1));
}

QDBusMessage setProfile(int number)
{
    OrvaNetworkWirelessInterface wireless;
    wireless.setSsid(QStringLiteral("Network %1").arg(number));
    OrvaNetworkProfile profile;
    profile.setType(OrvaNetworkProfileType::Auto);
    profile.setWireless(wireless);
    return write("Invoke", OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(profile));
}

QDBusMessage setAirplaneMode(int number)
{
    return write("SetValue", OrvaNetworkAirplaneModePath(), OrvaValue::of(number % 2 == 0));
}

QDBusMessage ping()
{
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.orva.Host1"), QStringLiteral("/org/orva/Host1"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
}

/// In milliseconds.
double timed(const QDBusConnection& bystander, const QDBusMessage& call)
{
    QElapsedTimer timer;
    timer.start();
    const QDBusMessage answer = bystander.call(call, QDBus::Block, 120000);
    if (answer.type() != QDBusMessage::ReplyMessage)
        qFatal("%s", qPrintable(answer.errorMessage()));
    return double(timer.nsecsElapsed()) / 1e6;
}

double at(std::vector<double>& samples, double share)
{
    std::sort(samples.begin(), samples.end());
    return samples.at(size_t(share * double(samples.size() - 1) + 0.5));
}

/// Sends all calls at once. The answer to the last, the only one that is looked at, says that all
/// are done: the host keeps the order of one caller.
QDBusPendingCall send(const Flood& flood, const QDBusConnection& flooder)
{
    for (int i = 0; i < flood.count - 1; ++i)
        flooder.asyncCall(flood.call(i));
    return flooder.asyncCall(flood.call(flood.count - 1), 300000);
}

void measure(const Flood& flood, const QDBusConnection& flooder, const QDBusConnection& bystander)
{
    std::vector<double> reads;
    std::vector<double> pings;
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < flood.rounds; ++round) {
        const QDBusPendingCall last = send(flood, flooder);
        // The two take turns at the beginning, when the bus is full.
        bool reading = round % 2 == 0;
        do {
            (reading ? reads : pings).push_back(timed(bystander, reading ? readState() : ping()));
            reading = !reading;
        } while (!last.isFinished());
        if (last.isError())
            qFatal("%s: %s", flood.what, qPrintable(last.error().message()));
    }
    std::printf("{\"what\": \"GetValue beside %d %s\", \"reads\": %zu, \"p50_ms\": %.1f, "
                "\"p99_ms\": %.1f, \"ping_p50_ms\": %.1f, \"ping_p99_ms\": %.1f, "
                "\"flood_s\": %.2f}\n",
                flood.count, flood.what, reads.size(), at(reads, 0.5), at(reads, 0.99),
                at(pings, 0.5), at(pings, 0.99), double(timer.elapsed()) / 1000 / flood.rounds);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const auto flooder =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("flooder"));
    const auto bystander =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("bystander"));
    for (const Flood& flood : {Flood{"settings", 1000, 50, setSetting},
                               Flood{"airplane toggles", 300, 1, setAirplaneMode},
                               Flood{"profiles", 1000, 1, setProfile}})
        measure(flood, flooder, bystander);
    return 0;
}
