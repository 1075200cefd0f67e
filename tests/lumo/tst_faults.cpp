// The connection daemon's faults: real processes on a real bus. After each, the picture is that of
// the world within 5 s, no request stays unanswered and the profile holds.
#include "lumotest.h"

class FaultsTest : public LumoTest
{
    Q_OBJECT
    QVector<CMReply<QVariant>> m_replies;

    void request(const CMPath& path, const OrvaValue& value = {})
    {
        m_replies << device->send(path, value);
    }
    QDBusMessage world(const QString& action, const QVariantList& arguments = {})
    {
        return call("org.orva.lumod.World"_s, action, arguments);
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
    bool allAnswered() const
    {
        return std::all_of(m_replies.begin(), m_replies.end(),
                           [](const auto& reply) { return reply.isFinished(); });
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
        QTest::addColumn<int>("index");
        for (int i = 0; i < faults().size(); ++i)
            QTest::newRow(faults().at(i).name) << i;
    }
    void afterAFaultThePictureIsTheWorld()
    {
        QFETCH(int, index);
        const Fault fault = faults().at(index);
        createDevice();
        request(OrvaNetworkStartPath());
        if (fault.whileConnected)
            EVENTUALLY(isConnectedTo("Home"_s));
        else
            EVENTUALLY(allAnswered());
        (this->*fault.happen)();
        EVENTUALLY(daemonPid() > 0);
        EVENTUALLY(isConnectedTo("Home"_s));
        EVENTUALLY_EQUAL(difference(), QString());
        EVENTUALLY(allAnswered());
    }

    void aDaemonThatComesAfterTheHostIsHeard()
    {
        write("absent", {});
        createDevice();
        request(OrvaNetworkStartPath());
        EVENTUALLY(allAnswered());
        QCOMPARE(device->info().wireless().mac(), QString());
        QFile::remove(path("absent"));
        connection->interface()->startService("org.orva.lumod"_s);
        EVENTUALLY(isConnectedTo("Home"_s));
        QCOMPARE(difference(), QString());
        QCOMPARE(device->value(OrvaNetworkStateWirelessMAC()).string_(),
                 details("wlan0"_s).value("Mac"_s).toString());
    }

private:
    struct Fault
    {
        const char* name;
        void (FaultsTest::*happen)();
        bool whileConnected = true;
    };
    static const QVector<Fault>& faults()
    {
        using Self = FaultsTest;
        static const QVector<Fault> all = {
            {"killed while idle", &Self::killDaemon},
            {"killed in a connect", &Self::killDaemon, false},
            {"killed in a scan", &Self::killInScan},
            {"killed in WPS", &Self::killInWps},
            {"killed in the start of a soft AP", &Self::killInSoftApStart},
            {"killed with a soft AP up", &Self::killWithSoftAp},
            {"killed between the writes and the mode", &Self::killBeforeMode},
            {"hanging for a while", &Self::hang},
            {"killed while it hangs", &Self::killWhileItHangs},
            {"killed twice in a second", &Self::killTwice},
            {"slow to start again", &Self::slowRestart},
            {"garbage in every map", &Self::garble},
        };
        return all;
    }

    void killInScan()
    {
        request(OrvaNetworkScanPath());
        QTest::qWait(50);
        killDaemon();
    }
    void killInWps()
    {
        request(OrvaNetworkPerformWpsPbcPath());
        QTest::qWait(50);
        killDaemon();
    }
    void killInSoftApStart()
    {
        request(OrvaNetworkRequestSoftApPath(), softApRequest());
        QTest::qWait(50);
        killDaemon();
    }
    void killWithSoftAp()
    {
        request(OrvaNetworkRequestSoftApPath(), softApRequest());
        EVENTUALLY(allAnswered());
        killDaemon();
    }
    void killBeforeMode()
    {
        signalDaemon(SIGSTOP);
        OrvaValue profile;
        profile.setNetworkProfile(profileWith({"Home"_s}));
        request(OrvaNetworkSetNetworkProfilePath(), profile);
        EVENTUALLY(allAnswered());
        killDaemon();
    }
    void hang()
    {
        signalDaemon(SIGSTOP);
        request(OrvaNetworkWirelessRssiPath());
        EVENTUALLY(allAnswered());
        QTest::qWait(500);
        signalDaemon(SIGCONT);
    }
    void killWhileItHangs()
    {
        signalDaemon(SIGSTOP);
        request(OrvaNetworkWirelessRssiPath());
        EVENTUALLY(allAnswered());
        killDaemon();
    }
    void killTwice()
    {
        killDaemon();
        EVENTUALLY(daemonPid() > 0);
        killDaemon();
    }
    void slowRestart()
    {
        write("delay", "3");
        killDaemon();
    }
    void garble()
    {
        for (const char* kind : {"wrong-types", "missing-keys", "oversized", "none"})
            world("Garble"_s, {QString::fromLatin1(kind)});
        QTest::qWait(500);
    }
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_faults.moc"
