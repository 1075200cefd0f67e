// How long a bystander waits for a value while another client of the host that runs on the system
// bus floods it with writes whose answers it does not collect:
//   bench_host_flood

#include <core/orva.h>
#include <network/networkpaths.h>
#include <network/networkrecords.h>

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
    OrvaValue value;
    value.setI32_(number + 1);
    return write("SetValue", OrvaNetworkMaxAuthFailuresSettingsPath(), value);
}

QDBusMessage setProfile(int number)
{
    OrvaNetworkWirelessInterface wireless;
    wireless.setSsid(QStringLiteral("Network %1").arg(number));
    OrvaNetworkProfile profile;
    profile.setType(OrvaNetworkProfileType::Auto);
    profile.setWireless(wireless);
    OrvaValue value;
    value.setNetworkProfile(profile);
    return write("Invoke", OrvaNetworkSetNetworkProfilePath(), value);
}

QDBusMessage setAirplaneMode(int number)
{
    OrvaValue value;
    value.setBool_(number % 2 == 0);
    return write("SetValue", OrvaNetworkAirplaneModePath(), value);
}

double timedRead(const QDBusConnection& bystander)
{
    QElapsedTimer timer;
    timer.start();
    const QDBusMessage answer = bystander.call(readState(), QDBus::Block, 120000);
    if (answer.type() != QDBusMessage::ReplyMessage)
        qFatal("%s", qPrintable(answer.errorMessage()));
    return double(timer.nsecsElapsed()) / 1e6;
}

double at(const std::vector<double>& sorted, double share)
{
    return sorted.at(size_t(share * double(sorted.size() - 1) + 0.5));
}

/// Sends all calls at once and reads until the last of them, the only one whose answer is looked
/// at, is answered: the host keeps the order of one caller.
void measure(const Flood& flood, const QDBusConnection& flooder, const QDBusConnection& bystander)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < flood.count - 1; ++i)
        flooder.asyncCall(flood.call(i));
    const QDBusPendingCall last = flooder.asyncCall(flood.call(flood.count - 1), 300000);
    std::vector<double> reads;
    do {
        reads.push_back(timedRead(bystander));
    } while (!last.isFinished());
    if (last.isError())
        qFatal("%s: %s", flood.what, qPrintable(last.error().message()));
    std::sort(reads.begin(), reads.end());
    std::printf("{\"what\": \"GetValue beside %d %s\", \"reads\": %zu, \"p50_ms\": %.1f, "
                "\"p99_ms\": %.1f, \"max_ms\": %.1f, \"flood_s\": %.1f}\n",
                flood.count, flood.what, reads.size(), at(reads, 0.5), at(reads, 0.99),
                reads.back(), double(timer.elapsed()) / 1000);
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
    for (const Flood& flood :
         {Flood{"settings", 1000, setSetting}, Flood{"airplane toggles", 300, setAirplaneMode},
          Flood{"profiles", 1000, setProfile}})
        measure(flood, flooder, bystander);
    return 0;
}
