#pragma once

#include "backend/lumo/networkinglowlevellumo.h"
#include "network/networkpaths.h"
#include "privatebus.h"
#include "values.h"
#include "workerfixture.h"

#include <QtDBus>

#include <csignal>

// What takes a moment here may take many on a machine that is busy with something else.
#define EVENTUALLY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 20000)
#define EVENTUALLY_EQUAL(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 20000)

/// What the tests of the connection daemon's client share: a bus that starts the daemon, a network
/// manager on it, and a second look at the daemon.
class LumoTest : public QObject
{
protected:
    using BackendFactory = Networking::BackendFactory;

    static OrvaValue softApRequest()
    {
        return json(R"({"networkSoftApRequest":
            {"name": "test", "settings": {"ssid": "Setup", "channel": 6}}})");
    }

    void startBus(const QString& daemonCommand)
    {
        bus.addService("org.orva.lumod"_s, daemonCommand);
        QVERIFY(bus.start());
        connection = std::make_unique<QDBusConnection>(bus.connection("test"_s));
    }
    /// A device with the soft-AP interface "uap0" and two networks in its stored profile.
    void createDevice()
    {
        const NodeValues settings = {
            {OrvaNetworkCurrentProfileSettingsPath(), json(R"({"networkProfile": {
                "wired": {"ip": "10.0.0.2", "netmask": "255.0.0.0", "dns": ["1.1.1.1", "9.9.9.9"]},
                "wireless": {"ssid": "Home", "key": "secret-Home", "encryption": 2},
                "wirelessNetworks": [{"ssid": "Home", "key": "secret-Home", "encryption": 2},
                                     {"ssid": "Café", "key": "secret-Café", "encryption": 2}]}})")},
            {OrvaNetworkSoftApConfigSettingsPath(),
             json(R"({"networkProfile": {"softApSettings": [{"apInterface": "uap0"}]}})")}};
        device =
            std::make_unique<WorkerFixture>(settings, BackendFactory([this](NetworkListener& own) {
                                                auto client =
                                                    std::make_unique<Networking_LowLevel_LUMO>(own);
                                                backend = client.get();
                                                return client;
                                            }));
    }
    /// Calls the daemon behind the client's back, and starts none.
    QDBusMessage call(const QString& interface, const QString& method,
                      const QVariantList& arguments = {}, QDBus::CallMode mode = QDBus::Block)
    {
        auto message = QDBusMessage::createMethodCall("org.orva.lumod"_s, "/org/orva/lumod"_s,
                                                      interface, method);
        message.setArguments(arguments);
        message.setAutoStartService(false);
        return connection->call(message, mode);
    }
    /// 0 when there is no daemon.
    int daemonPid() const
    {
        return static_cast<int>(connection->interface()->servicePid("org.orva.lumod"_s).value());
    }
    QString path(const char* name) const { return directory.filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    /// Ends device and daemon, and removes the files that told the daemon what to do.
    void endDevice(const QStringList& files)
    {
        const int pid = daemonPid();
        device.reset();
        if (pid > 0)
            ::kill(pid, SIGKILL);
        // The bus has seen it go: the next device must not find a daemon that is dying.
        EVENTUALLY_EQUAL(daemonPid(), 0);
        for (const QString& name : files)
            QFile::remove(directory.filePath(name));
    }

    QTemporaryDir directory;
    PrivateBus bus;
    std::unique_ptr<QDBusConnection> connection;
    std::unique_ptr<WorkerFixture> device;
    Networking_LowLevel* backend = nullptr;
};
