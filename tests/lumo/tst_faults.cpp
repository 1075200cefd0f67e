// The connection daemon's faults: real processes on a real bus. After each, the picture is that of
// the world within 5 s, no request stays unanswered and the profile holds.
#include "lumofixture.h"

#include <csignal>

class FaultsTest : public QObject
{
    Q_OBJECT
    QTemporaryDir m_directory;
    PrivateBus m_bus;
    std::unique_ptr<LumoFixture> m_device;
    QVector<CMReply<QVariant>> m_replies;

    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    void request(const CMPath& path, const OrvaValue& value = {})
    {
        m_replies << m_device->device.send(path, value);
    }
    QDBusMessage world(const QString& action, const QVariantList& arguments = {})
    {
        return m_device->call(QStringLiteral("org.orva.lumod.World"), action, arguments);
    }
    QVariantMap details(const QString& interface)
    {
        const QDBusMessage reply = m_device->call(QStringLiteral("org.orva.lumod"),
                                                  QStringLiteral("InterfaceDetails"), {interface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    void signalDaemon(int signal)
    {
        const int pid = m_device->daemonPid();
        QVERIFY(pid > 0);
        QCOMPARE(::kill(pid, signal), 0);
    }
    /// Kills the daemon and waits until the bus knows.
    void killDaemon()
    {
        const int pid = m_device->daemonPid();
        signalDaemon(SIGKILL);
        QTRY_VERIFY(m_device->daemonPid() != pid);
    }

    bool isConnectedTo(const QString& ssid)
    {
        const OrvaNetworkWirelessInterface wireless = m_device->device.info().wireless();
        return wireless.state() == OrvaNetworkState::Connected && wireless.ssid() == ssid &&
               !wireless.addresses().isEmpty();
    }
    /// What the published picture and the daemon's own world differ in.
    QString difference()
    {
        const OrvaNetworkInfo info = m_device->device.info();
        const QVariantMap wired = details(QStringLiteral("eth0"));
        const QVariantMap wireless = details(QStringLiteral("wlan0"));
        const auto same = [](const QVariant& world, OrvaNetworkState state) {
            return world.toBool() == (state == OrvaNetworkState::Connected);
        };
        if (wireless.isEmpty())
            return QStringLiteral("no daemon");
        if (wired.value(QStringLiteral("CableStatus")) != info.wired().cableConnected())
            return QStringLiteral("cable");
        if (!same(wired.value(QStringLiteral("Connected")), info.wired().state()))
            return QStringLiteral("wired state");
        if (!same(wireless.value(QStringLiteral("Connected")), info.wireless().state()))
            return QStringLiteral("wireless state");
        if (wireless.value(QStringLiteral("Ssid")) != info.wireless().ssid())
            return QStringLiteral("SSID");
        if (!same(details(QStringLiteral("uap0")).value(QStringLiteral("SoftApUp")),
                  info.softAp().state()))
            return QStringLiteral("soft AP");
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
        qputenv("QT_LOGGING_RULES", "lumod.*=false");
        m_bus.addService(QStringLiteral("org.orva.lumod"),
                         QStringLiteral("/bin/sh %1 %2").arg(path("start"), m_directory.path()));
        QVERIFY(m_bus.start());
    }
    void cleanup()
    {
        m_replies.clear();
        const int pid = m_device->daemonPid();
        m_device.reset();
        if (pid > 0)
            ::kill(pid, SIGKILL);
        for (const char* name : {"absent", "delay"})
            QFile::remove(path(name));
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
        m_device = std::make_unique<LumoFixture>(m_bus);
        request(OrvaNetworkStartPath());
        if (fault.whileConnected)
            QTRY_VERIFY(isConnectedTo(QStringLiteral("Home")));
        else
            QTRY_VERIFY(allAnswered());
        (this->*fault.happen)();
        QTRY_VERIFY(m_device->daemonPid() > 0);
        QTRY_VERIFY2(isConnectedTo(QStringLiteral("Home")), qPrintable(difference()));
        QTRY_COMPARE(difference(), QString());
        QTRY_VERIFY(allAnswered());
    }

    void aDaemonThatComesAfterTheHostIsHeard()
    {
        write("absent", {});
        m_device = std::make_unique<LumoFixture>(m_bus);
        request(OrvaNetworkStartPath());
        QTRY_VERIFY(allAnswered());
        QCOMPARE(m_device->device.info().wireless().mac(), QString());
        QFile::remove(path("absent"));
        m_device->connection().interface()->startService(QStringLiteral("org.orva.lumod"));
        QTRY_VERIFY(isConnectedTo(QStringLiteral("Home")));
        QCOMPARE(difference(), QString());
        QCOMPARE(m_device->device.value(OrvaNetworkStateWirelessMAC()).string_(),
                 details(QStringLiteral("wlan0")).value(QStringLiteral("Mac")).toString());
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
        request(OrvaNetworkRequestSoftApPath(), LumoFixture::softApRequest());
        QTest::qWait(50);
        killDaemon();
    }
    void killWithSoftAp()
    {
        request(OrvaNetworkRequestSoftApPath(), LumoFixture::softApRequest());
        QTRY_VERIFY(allAnswered());
        killDaemon();
    }
    void killBeforeMode()
    {
        signalDaemon(SIGSTOP);
        OrvaValue profile;
        profile.setNetworkProfile(profileWith({QStringLiteral("Home")}));
        request(OrvaNetworkSetNetworkProfilePath(), profile);
        QTRY_VERIFY(allAnswered());
        killDaemon();
    }
    void hang()
    {
        signalDaemon(SIGSTOP);
        request(OrvaNetworkWirelessRssiPath());
        QTRY_VERIFY(allAnswered());
        QTest::qWait(500);
        signalDaemon(SIGCONT);
    }
    void killWhileItHangs()
    {
        signalDaemon(SIGSTOP);
        request(OrvaNetworkWirelessRssiPath());
        QTRY_VERIFY(allAnswered());
        killDaemon();
    }
    void killTwice()
    {
        killDaemon();
        QTRY_VERIFY(m_device->daemonPid() > 0);
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
            world(QStringLiteral("Garble"), {QString::fromLatin1(kind)});
        QTest::qWait(500);
    }
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_faults.moc"
