// The worker over the connection daemon's client, against a daemon that is written in another
// language and writes down what it reads.
#include "lumotest.h"
#include "playedlistener.h"

class WireTest : public LumoTest
{
    Q_OBJECT

    /// What the daemons were told, and their starts, in order; the questions left out.
    QStringList calls() const
    {
        QFile file(path("calls"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll())
            .split(QLatin1Char('\n'))
            .filter(QRegularExpression("^(?!InterfaceDetails)."_s));
    }
    QStringList callsSinceStart() const
    {
        const QStringList all = calls();
        return all.mid(all.lastIndexOf("start"_s) + 1);
    }
    int starts() const { return calls().count("start"_s); }
    void tell(const QString& method, const QVariantList& arguments = {})
    {
        call("org.orva.Test"_s, method, arguments);
    }
    void emitSignal(const QString& member, const QVariantList& arguments = {})
    {
        tell("Emit"_s, QVariantList{member} + arguments);
    }
    CMReply<QVariant> send(const CMPath& path, const OrvaValue& value = {})
    {
        return device->send(path, value);
    }
    /// What the daemon is told that comes after one that left, beside the profile.
    QStringList toldNextDaemon()
    {
        const int started = starts();
        tell("Exit"_s);
        const auto profileIsTold = [&] {
            return starts() > started && callsSinceStart().size() >= profileCalls().size();
        };
        (void)QTest::qWaitFor(profileIsTold, 20000);
        send(OrvaNetworkForceWifiReconnectPath()); // comes after all that is told again
        const auto isTold = [&] { return callsSinceStart().contains("ForceWifiReconnect()"_s); };
        (void)QTest::qWaitFor(isTold, 20000);
        return callsSinceStart().mid(profileCalls().size());
    }
    bool currentCable() { return device->worker->currentCableStatus(); }

    static QStringList profileCalls()
    {
        return {"Set(s:org.orva.lumod, s:WirelessNetworks, v:a{sv}("
                "Café=v:a{sv}(priority=v:i:1, wpa_psk=v:s:secret-Café), "
                "Home=v:a{sv}(priority=v:i:2, wpa_psk=v:s:secret-Home)))"_s,
                "Set(s:org.orva.lumod, s:WiredIpSettings, v:a{sv}(Dns=v:s:1.1.1.1 9.9.9.9, "
                "Gateway=v:s:, Ip=v:s:10.0.0.2, Netmask=v:s:255.0.0.0))"_s,
                "Set(s:org.orva.lumod, s:WirelessIpSettings, v:a{sv}())"_s,
                "SetNormalMode(s:auto)"_s};
    }
    static QString softApCall()
    {
        return "StartSoftAp(s:uap0, a{sv}(apInterface=v:s:uap0, channel=v:i:6, ssid=v:s:Setup))"_s;
    }

private Q_SLOTS:
    void initTestCase()
    {
        startBus(
            "/usr/bin/python3 -B %1 %2"_s.arg(QFINDTESTDATA("fakelumod.py"), directory.path()));
    }
    void init() { createDevice(); }
    void cleanup() { endDevice({"calls"_s, "delay"_s, "crash"_s}); }

    void everyCommandHasItsTypesAndItsPlace()
    {
        QStringList expected = profileCalls();
        send(OrvaNetworkStartPath());
        send(OrvaNetworkForceWifiReconnectPath());
        const auto softAp = send(OrvaNetworkRequestSoftApPath(), softApRequest());
        const auto pin = send(OrvaNetworkPerformWpsPinPath(), OrvaValue::of("12345670"_s));
        expected << "ForceWifiReconnect()"_s << softApCall() << "WpsPin(s:12345670)"_s;
        EVENTUALLY_EQUAL(callsSinceStart(), expected);

        emitSignal("Connected"_s, {"uap0"_s});
        EVENTUALLY(softAp.isFinished());
        emitSignal(
            "WpsCredentials"_s,
            {QVariantMap{{"ssid"_s, "A"_s}, {"type"_s, "wpa-psk"_s}, {"wpa_psk"_s, "secret99"_s}}});
        EVENTUALLY(pin.isFinished());
        QCOMPARE(OrvaValue(pin.value().toHash()).networkInterface().key(), "secret99"_s);

        emitSignal("InterfaceStatusChanged"_s, {"wlan0"_s, 2});
        EVENTUALLY_EQUAL(backend->interfaceStatus("wlan0"_s), Networking_LowLevel::Idle);
        send(OrvaNetworkPerformWpsPbcPath());
        send(OrvaNetworkScanPath());
        send(OrvaNetworkStopPath());
        expected << "WpsPbc()"_s
                 << "Scan()"_s
                 << "SetOffMode()"_s
                 << "StopSoftAp(s:uap0)"_s;
        EVENTUALLY_EQUAL(callsSinceStart(), expected);
    }

    void everyWidthOfIntegerReadsAlikeAndTextsAreCut()
    {
        const OrvaNetworkInfo info = device->info();
        QCOMPARE(info.wired().mac(), "02:00:00:00:00:01"_s);
        QVERIFY(info.wired().cableConnected());

        emitSignal("AddressesChanged"_s);
        EVENTUALLY_EQUAL(device->info().wireless().signalLevel(), -61);
        const OrvaNetworkWirelessInterface wireless = device->info().wireless();
        QCOMPARE(wireless.frequency(), 2412);
        QCOMPARE(wireless.channel(), 1);
        QCOMPARE(wireless.mac(), QString());
        QVERIFY(wireless.addresses().isEmpty());

        const QString longText(5000, QLatin1Char('x'));
        emitSignal("AuthError"_s, {"Home"_s, longText});
        EVENTUALLY_EQUAL(device->value(OrvaNetworkConnectingMessage()).string_(),
                         longText.left(4096));
        emitSignal("StationConnected"_s, {longText});
        const QStringList stations{longText.left(4096).toUpper()};
        EVENTUALLY_EQUAL(device->value(OrvaNetworkConnectedSoftApStationsPath()).stringList(),
                         stations);
    }

    /// A daemon that starts anew takes nothing down that was in between.
    void endsWhatWasInBetweenByName()
    {
        PlayedListener listener;
        listener.disconnecting = QStringList{"wlan0"_s, "uap1"_s, "eth0"_s, "uap0"_s};
        const Networking_LowLevel_LUMO client(listener);
        emitSignal("Connected"_s, {"wlan0"_s});
        emitSignal("Started"_s);
        const QStringList heard = {"cable in"_s,  "wlan0 up"_s,  "eth0 down"_s,
                                   "uap0 down"_s, "uap1 down"_s, "wlan0 down"_s};
        EVENTUALLY_EQUAL(listener.heard, heard);
    }

    void aDaemonThatHangsCostsTwoSecondsOnce()
    {
        send(OrvaNetworkStartPath());
        EVENTUALLY_EQUAL(callsSinceStart().size(), 4);
        QSignalSpy refreshed(backend, &Networking_LowLevel::AddressesChanged);
        call("org.orva.Test"_s, "Hang"_s, {8000}, QDBus::NoBlock);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() > 1900 && clock.elapsed() < 6000);
        for (int i = 0; i < 100; ++i)
            QVERIFY(backend->getEthernetMAC().isEmpty());
        send(OrvaNetworkForceWifiReconnectPath());
        QTest::qWait(100);
        QVERIFY(backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() < 8000);

        EVENTUALLY_EQUAL(refreshed.size(), 1);
        QVERIFY(!backend->findChild<QTimer*>("giveUpTimer"_s)->isActive());
        QVERIFY(!backend->getEthernetMAC().isEmpty());
        EVENTUALLY_EQUAL(callsSinceStart().value(4), "ForceWifiReconnect()"_s);
    }

    void anAnswerThatNeverComesIsGivenUp()
    {
        QSignalSpy refreshed(backend, &Networking_LowLevel::AddressesChanged);
        for (int lost = 1; lost <= 2; ++lost) {
            tell("Swallow"_s);
            QVERIFY(backend->getEthernetMAC().isEmpty());
            auto* timer = backend->findChild<QTimer*>("giveUpTimer"_s);
            QVERIFY(timer && timer->isActive());
            QCOMPARE(timer->interval(), 28000); // after the 2 s of the question
            timer->start(1);
            EVENTUALLY_EQUAL(refreshed.size(), lost);
            QVERIFY(!timer->isActive());
            QVERIFY(!backend->getEthernetMAC().isEmpty());
        }
    }

    /// Whether an error is an answer: after none, everything is asked again.
    void readsErrors_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<int>("refreshes");
        QTest::newRow("the bus's policy") << "org.freedesktop.DBus.Error.AccessDenied"_s << 1;
        QTest::newRow("the bus's limits") << "org.freedesktop.DBus.Error.LimitsExceeded"_s << 1;
        QTest::newRow("the daemon's own") << "org.orva.lumod.Error"_s << 0;
    }
    void readsErrors()
    {
        QFETCH(QString, error);
        QSignalSpy refreshed(backend, &Networking_LowLevel::AddressesChanged);
        tell("Fail"_s, {error});
        QVERIFY(backend->getEthernetMAC().isEmpty());
        tell("Fail"_s, {QString()});
        QVERIFY(!backend->getEthernetMAC().isEmpty());
        QTest::qWait(50);
        QTEST(refreshed.size(), "refreshes");
    }

    void theStartWaitsForASlowDaemon()
    {
        cleanup();
        write("delay", "3");
        init();
        QCOMPARE(device->info().wired().mac(), "02:00:00:00:00:01"_s);
        QCOMPARE(starts(), 1);
    }

    void aDaemonThatIsLostComesBackAsItWas()
    {
        send(OrvaNetworkStartPath());
        send(OrvaNetworkRequestSoftApPath(), softApRequest());
        const auto wps = send(OrvaNetworkPerformWpsPbcPath());
        emitSignal("Connected"_s, {"eth0"_s});
        emitSignal("Disconnecting"_s, {"wlan0"_s}); // It never was connected.
        emitSignal("Disconnecting"_s, {"uap0"_s});
        EVENTUALLY_EQUAL(device->info().softAp().state(), OrvaNetworkState::Disconnecting);

        tell("Exit"_s);
        EVENTUALLY(wps.isFinished());
        QCOMPARE(WorkerFixture::outcome(wps), "WpsError: Networking restarted!"_s);
        QVERIFY(!device->worker->linkStatus());
        QCOMPARE(device->info().wireless().state(), OrvaNetworkState::Disconnected);
        QCOMPARE(device->info().softAp().state(), OrvaNetworkState::Disconnected);
        EVENTUALLY_EQUAL(callsSinceStart(), profileCalls() << softApCall());
        QCOMPARE(starts(), 2);
    }

    void aNewDaemonIsToldWhatIsStillWanted_data()
    {
        QTest::addColumn<CMPath>("asked");
        QTest::addColumn<OrvaValue>("value");
        QTest::addColumn<CMPath>("then");
        QTest::addColumn<QString>("timer"); // whose time is up then
        QTest::addColumn<QString>("told");
        const CMPath softAp = OrvaNetworkRequestSoftApPath();
        const CMPath scan = OrvaNetworkScanPath();
        const CMPath nothing;
        QTest::newRow("soft AP revoked")
            << softAp << softApRequest() << OrvaNetworkRevokeSoftApPath() << ""
            << "";
        QTest::newRow("soft AP stopped") << softAp << softApRequest() << OrvaNetworkStopPath() << ""
                                         << "";
        QTest::newRow("scan") << scan << OrvaValue() << nothing << ""
                              << "Scan()";
        QTest::newRow("scan that timed out") << scan << OrvaValue() << nothing << "m_scanTimer"
                                             << "";
        QTest::newRow("scan before the stop") << scan << OrvaValue() << OrvaNetworkStopPath() << ""
                                              << "";
    }
    void aNewDaemonIsToldWhatIsStillWanted()
    {
        QFETCH(CMPath, asked);
        QFETCH(OrvaValue, value);
        QFETCH(CMPath, then);
        QFETCH(QString, timer);
        QFETCH(QString, told);
        send(OrvaNetworkStartPath());
        emitSignal("InterfaceStatusChanged"_s, {"wlan0"_s, 2});
        EVENTUALLY_EQUAL(backend->interfaceStatus("wlan0"_s), Networking_LowLevel::Idle);
        send(asked, value);
        EVENTUALLY_EQUAL(callsSinceStart().size(), profileCalls().size() + 1);
        if (!then.isEmpty())
            device->request(then, softApRequest());
        QCOMPARE(device->fire(timer), !timer.isEmpty());
        const QString last = "ForceWifiReconnect()"_s;
        QCOMPARE(toldNextDaemon().join(QString()), told + last);
        if (asked == OrvaNetworkScanPath()) // which may be what the daemon dies of
            QCOMPARE(toldNextDaemon(), {last});
    }

    void aCrashLoopSlowsDown()
    {
        send(OrvaNetworkStartPath());
        EVENTUALLY_EQUAL(callsSinceStart(), profileCalls());
        write("crash", {});
        tell("Exit"_s);
        EVENTUALLY_EQUAL(starts(), 3);
        QElapsedTimer clock;
        clock.start();
        EVENTUALLY_EQUAL(starts(), 5);
        QVERIFY(clock.elapsed() > 2500); // 1 s, then 2 s
        auto* timer = backend->findChild<QTimer*>("restartTimer"_s);
        EVENTUALLY(timer->isActive());
        timer->start(3600000);
        QFile::remove(path("crash"));
        connection->interface()->startService("org.orva.lumod"_s);
        EVENTUALLY(!timer->isActive());
        EVENTUALLY_EQUAL(callsSinceStart(), profileCalls());
    }

    void aWpsSessionThatNeverEndsIsGivenUp()
    {
        send(OrvaNetworkStartPath());
        const auto first = send(OrvaNetworkPerformWpsPbcPath());
        auto* timer = backend->findChild<QTimer*>("wpsTimer"_s);
        EVENTUALLY(timer->isActive());
        QCOMPARE(timer->interval(), 130000);
        timer->start(1);
        EVENTUALLY(first.isFinished());
        QCOMPARE(WorkerFixture::outcome(first), "WpsError: WPS request timed out"_s);
        const auto second = send(OrvaNetworkPerformWpsPbcPath());
        EVENTUALLY_EQUAL(callsSinceStart().count("WpsPbc()"_s), 2);
        QVERIFY(!second.isFinished());
    }
};

QTEST_GUILESS_MAIN(WireTest)
#include "tst_wire.moc"
