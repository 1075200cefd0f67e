// SPDX-License-Identifier: Apache-2.0
// The waits of a client of the network manager, on a bus and a device of the program's own:
//   bench_module_picture [DIRECTORY]
// A profile that is set, from the call to the answer, with the settings in DIRECTORY (on a disk)
// and in memory; a change of the network, from the backend's signal to the client; and how many
// changes are absorbed. A ping in the same run is the measure of the bus.

#include "figures.h"
#include "host.h"
#include "network/networkpaths.h"
#include "networking.h"
#include "nodelookup.h"
#include "privatebus.h"
#include "scriptedbackend.h"

#include <QCoreApplication>
#include <QDBusPendingCall>
#include <QElapsedTimer>

#include <ctime>

namespace {

qint64 nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

CMPath changePath()
{
    return CMPath(QStringLiteral("bench/change"));
}

/// Lets the network change as often as it is told, each time with the moment as its gateway.
class Trigger : public CMNodesWorker
{
public:
    explicit Trigger(ScriptedBackend*& backend)
        : CMNodesWorker({}, QStringLiteral("bench"))
    {
        connect(CMActivateNode::create(nodes(), changePath()), &CMActivateNode::invoked, this,
                [&backend](const CMSetDataRequest& request) {
                    for (int i = request.value().i32_(); i > 0; --i)
                        change(*backend);
                    request.answer();
                });
    }

private:
    static void change(ScriptedBackend& backend)
    {
        OrvaNetworkAddress moment;
        moment.setIp(QString::number(nowNs()));
        backend.state.setGateways({moment});
        Q_EMIT backend.AddressesChanged();
    }
};

/// The device: the host with the network manager over a backend that is played.
int runDevice(const QString& stateDirectory)
{
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    qputenv("PATH", ORVA_STAND_INS ":" + qgetenv("PATH"));
    HostConfig config;
    config.stateDirectory = stateDirectory;
    for (SettingDefault& setting : config.settings) {
        if (setting.path == OrvaNetworkMaxNumberWifiNetworks())
            setting.value = OrvaValue::of(0);
    }
    Host host(config, QDBusConnection::systemBus());
    ScriptedBackend* backend = nullptr;
    const auto createBackend = [&](NetworkListener&) {
        auto own = std::make_unique<ScriptedBackend>();
        backend = own.get();
        return own;
    };
    host.root().addWorker(std::make_unique<Trigger>(backend));
    if (!host.start())
        return 1;
    host.root().addWorker(std::make_unique<Networking>(QVariantHash(), createBackend));
    return QCoreApplication::exec();
}

QDBusMessage call(const char* interface, const char* method, const QVariantList& arguments)
{
    auto message = QDBusMessage::createMethodCall(QStringLiteral("org.orva.Host1"),
                                                  QStringLiteral("/org/orva/Host1"),
                                                  QLatin1String(interface), QLatin1String(method));
    message.setArguments(arguments);
    return message;
}

qint64 timed(const QDBusMessage& message)
{
    const qint64 begin = nowNs();
    const QDBusMessage answer = QDBusConnection::systemBus().call(message);
    const qint64 end = nowNs();
    if (answer.type() != QDBusMessage::ReplyMessage)
        qFatal("%s", qPrintable(answer.errorMessage()));
    return end - begin;
}

qint64 ping()
{
    return timed(call("org.freedesktop.DBus.Peer", "Ping", {}));
}

QDBusMessage invocation(const CMPath& path, const OrvaValue& value = {})
{
    return call("org.orva.Host1", "Invoke", {path.toString(), OrvaPlain::toBus(value.__hash())});
}

OrvaNetworkProfile profileOf(int networkCount, int variant)
{
    OrvaList<OrvaNetworkInterface> networks;
    for (int i = 0; i < networkCount; ++i) {
        OrvaNetworkInterface network;
        network.setSsid(QStringLiteral("network %1 of %2").arg(i).arg(variant));
        network.setKey(QStringLiteral("a passphrase"));
        network.setEncryption(OrvaNetworkProfileWirelessEncryption::WpaPsk);
        network.setDhcp(true);
        networks << network;
    }
    OrvaNetworkProfile profile;
    profile.setWireless(networks.first());
    profile.setWirelessNetworks(networks);
    return profile;
}

/// Hears what changes and notes how long it was under way.
class Listener : public QObject
{
    Q_OBJECT
public:
    Listener()
    {
        QDBusConnection::systemBus().connect(
            QStringLiteral("org.orva.Host1"), QStringLiteral("/org/orva/Host1"),
            QStringLiteral("org.orva.Host1"), QStringLiteral("ValueChanged"), this,
            SLOT(on_valueChanged(QString, QVariantMap)));
    }

    /// Waits until `count` changes of the picture were heard, for at most 10 s.
    void waitFor(std::size_t count)
    {
        const qint64 end = nowNs() + 10000000000;
        while (underWay.size() < count && nowNs() < end)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }

    std::vector<qint64> underWay;

public Q_SLOTS:
    void on_valueChanged(const QString& path, const QVariantMap& value)
    {
        const qint64 now = nowNs();
        if (path != OrvaNetworkInfoPath().toString())
            return;
        const auto plain = OrvaPlain::hashFromBus(value).value_or(QVariantHash());
        const auto gateways = OrvaValue(plain).networkInfo().gateways();
        if (!gateways.isEmpty())
            underWay.push_back(now - gateways.first().ip().toLongLong());
    }
};

void measureProfiles(const QByteArray& where)
{
    for (const int networkCount : {1, 10, 100}) {
        std::vector<qint64> times;
        for (int i = -10; i < 200; ++i) {
            const qint64 time = timed(invocation(OrvaNetworkSetNetworkProfilePath(),
                                                 OrvaValue::of(profileOf(networkCount, i))));
            if (i >= 0)
                times.push_back(time);
        }
        printPercentiles(
            QByteArray("set a profile of " + QByteArray::number(networkCount) + where).constData(),
            times);
    }
}

void measureChanges()
{
    constexpr int samples = 1000;
    constexpr int burst = 10000;
    Listener listener;
    std::vector<qint64> pings;
    for (std::size_t i = 1; i <= samples; ++i) {
        pings.push_back(ping());
        (void)QDBusConnection::systemBus().asyncCall(invocation(changePath(), OrvaValue::of(1)));
        listener.waitFor(i);
    }
    printPercentiles("a ping", pings);
    printPercentiles("a change, from signal to client", listener.underWay);

    listener.underWay.clear();
    const qint64 begin = nowNs();
    (void)QDBusConnection::systemBus().asyncCall(invocation(changePath(), OrvaValue::of(burst)));
    listener.waitFor(burst);
    const double seconds = double(nowNs() - begin) / 1e9;
    std::printf("{\"name\":\"changes absorbed\",\"count\":%zu,\"per_second\":%.0f}\n",
                listener.underWay.size(), double(listener.underWay.size()) / seconds);
}

/// A device on a bus, as long as `measure` takes.
void withDevice(const QString& stateDirectory, const std::function<void()>& measure)
{
    QProcess device;
    device.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    device.start(QCoreApplication::applicationFilePath(),
                 {QStringLiteral("--device"), stateDirectory});
    QDBusMessage answer;
    QElapsedTimer waiting;
    waiting.start();
    do {
        answer = QDBusConnection::systemBus().call(invocation(OrvaNetworkStartPath()));
    } while (answer.type() != QDBusMessage::ReplyMessage && waiting.elapsed() < 10000);
    measure();
    device.terminate();
    device.waitForFinished();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--device"))
        return runDevice(arguments.value(2));

    PrivateBus bus;
    if (!bus.start())
        return 1;
    const QTemporaryDir disk(arguments.value(1, QStringLiteral(".")) + QStringLiteral("/bench"));
    const QTemporaryDir memory(QStringLiteral("/dev/shm/bench"));
    withDevice(disk.path(), [] {
        measureProfiles(", on disk");
        measureChanges();
    });
    withDevice(memory.path(), [] { measureProfiles(", in memory"); });
    return 0;
}

#include "picture.moc"
