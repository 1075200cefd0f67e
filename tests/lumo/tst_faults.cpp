// The connection daemon's faults: real processes on a real bus. After each, the picture is that of
// the world within 5 s, no request stays unanswered and the profile holds.
#include "lumotest.h"

using Fault = std::function<void()>;
Q_DECLARE_METATYPE(Fault)

class FaultsTest : public LumoTest
{
    Q_OBJECT
    QVector<CMReply<QVariant>> m_replies;

    void request(const CMPath& path, const OrvaValue& value = {})
    {
        m_replies << device->send(path, value);
    }
    bool allAnswered() const
    {
        return std::all_of(m_replies.begin(), m_replies.end(),
                           [](const auto& reply) { return reply.isFinished(); });
    }
    void requestUntilAnswered(const CMPath& path, const OrvaValue& value = {})
    {
        request(path, value);
        EVENTUALLY(allAnswered());
    }
    QVariantMap details(const QString& interface)
    {
        const QDBusMessage reply = call("org.orva.lumod"_s, "InterfaceDetails"_s, {interface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    void signalDaemon(int signal)
    {
        const int pid = daemonPid();
        QVERIFY(pid > 0);
        QCOMPARE(::kill(pid, signal), 0);
    }
    /// Kills the daemon and waits until the bus knows.
    void killDaemon()
    {
        const int pid = daemonPid();
        signalDaemon(SIGKILL);
        EVENTUALLY(daemonPid() != pid);
    }

    bool isConnectedTo(const QString& ssid)
    {
        const OrvaNetworkWirelessInterface wireless = device->info().wireless();
        return wireless.state() == OrvaNetworkState::Connected && wireless.ssid() == ssid &&
               !wireless.addresses().isEmpty();
    }
    /// What the published picture and the daemon's own world differ in.
    QString difference()
    {
        const OrvaNetworkInfo info = device->info();
        const QVariantMap wired = details("eth0"_s);
        const QVariantMap wireless = details("wlan0"_s);
        const auto same = [](const QVariant& world, OrvaNetworkState state) {
            return world.toBool() == (state == OrvaNetworkState::Connected);
        };
        if (wireless.isEmpty())
            return "no daemon"_s;
        if (wired.value("CableStatus"_s) != info.wired().cableConnected())
            return "cable"_s;
        if (!same(wired.value("Connected"_s), info.wired().state()))
            return "wired state"_s;
        if (!same(wireless.value("Connected"_s), info.wireless().state()))
            return "wireless state"_s;
        if (wireless.value("Ssid"_s) != info.wireless().ssid())
            return "SSID"_s;
        if (!same(details("uap0"_s).value("SoftApUp"_s), info.softAp().state()))
            return "soft AP"_s;
        return QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        write("world.json",
              R"({"timeFactor": 0.1, "delays": {"wps": 20000}, "cable": {"plugged": false},
            "networks": {"home": {"subnet": "10.1.0.0/24", "gateway": "10.1.0.1"}},
            "accessPoints": [{"ssid": "Home", "security": "wpa-psk", "key": "secret-Home",
                              "wps": true, "network": "home"}]})");
        // Starts as slowly as "delay" says, and not at all while there is "absent".
        write("start", "[ ! -e \"$1/absent\" ] || exit 1\n"
                       "[ ! -e \"$1/delay\" ] || sleep \"$(cat \"$1/delay\")\"\n"
                       "exec " ORVA_LUMOD " --world \"$1/world.json\"\n");
        startBus("/bin/sh %1 %2"_s.arg(path("start"), directory.path()));
    }
    void cleanup()
    {
        m_replies.clear();
        endDevice({"absent"_s, "delay"_s});
    }

    void afterAFaultThePictureIsTheWorld_data()
    {
        QTest::addColumn<bool>("connected"); // before the fault
        QTest::addColumn<Fault>("fault");
        const auto kill = [this] { killDaemon(); };
        const auto killIn = [this](const CMPath& path, const OrvaValue& value = {}) {
            return [this, path, value] {
                request(path, value);
                QTest::qWait(50);
                killDaemon();
            };
        };
        const auto add = [](const char* name, const Fault& fault, bool connected = true) {
            QTest::newRow(name) << connected << fault;
        };
        add("killed in a connect", kill, false);
        add("killed in a scan", killIn(OrvaNetworkScanPath()));
        add("killed in WPS", killIn(OrvaNetworkPerformWpsPbcPath()));
        add("killed in the start of a soft AP",
            killIn(OrvaNetworkRequestSoftApPath(), softApRequest()));
        add("killed with a soft AP up", [this] {
            requestUntilAnswered(OrvaNetworkRequestSoftApPath(), softApRequest());
            killDaemon();
        });
        add("killed between the writes and the mode", [this] {
            const OrvaValue profile = OrvaValue::of(profileWith({"Home"_s}));
            signalDaemon(SIGSTOP);
            requestUntilAnswered(OrvaNetworkSetNetworkProfilePath(), profile);
            killDaemon();
        });
        add("hanging for a while", [this] {
            signalDaemon(SIGSTOP);
            requestUntilAnswered(OrvaNetworkWirelessRssiPath());
            QTest::qWait(500);
            signalDaemon(SIGCONT);
        });
        add("killed while it hangs", [this] {
            signalDaemon(SIGSTOP);
            requestUntilAnswered(OrvaNetworkWirelessRssiPath());
            killDaemon();
        });
        add("killed twice in a second", [this] {
            killDaemon();
            EVENTUALLY(daemonPid() > 0);
            killDaemon();
        });
        add("slow to start again", [this] {
            write("delay", "3");
            killDaemon();
        });
        add("garbage in every map", [this] {
            for (const char* kind : {"wrong-types", "missing-keys", "oversized", "none"})
                call("org.orva.lumod.World"_s, "Garble"_s, {QString::fromLatin1(kind)});
            QTest::qWait(500);
        });
    }
    void afterAFaultThePictureIsTheWorld()
    {
        QFETCH(bool, connected);
        QFETCH(Fault, fault);
        createDevice();
        requestUntilAnswered(OrvaNetworkStartPath());
        if (connected)
            EVENTUALLY(isConnectedTo("Home"_s));
        fault();
        EVENTUALLY(daemonPid() > 0);
        EVENTUALLY(isConnectedTo("Home"_s));
        EVENTUALLY_EQUAL(difference(), QString());
        EVENTUALLY(allAnswered());
    }

    void aRestartedHostCanScan()
    {
        for (int i = 0; i < 2; ++i) {
            device.reset();
            createDevice();
            requestUntilAnswered(OrvaNetworkStartPath());
            EVENTUALLY(isConnectedTo("Home"_s));
            requestUntilAnswered(OrvaNetworkScanPath());
        }
    }

    void aDaemonThatComesAfterTheHostIsHeard()
    {
        write("absent", {});
        createDevice();
        requestUntilAnswered(OrvaNetworkStartPath());
        QCOMPARE(device->info().wireless().mac(), QString());
        QFile::remove(path("absent"));
        connection->interface()->startService("org.orva.lumod"_s);
        EVENTUALLY(isConnectedTo("Home"_s));
        QCOMPARE(difference(), QString());
        QCOMPARE(device->value(OrvaNetworkStateWirelessMAC()).string_(),
                 details("wlan0"_s).value("Mac"_s).toString());
    }
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_faults.moc"
