// The worker over the connection daemon's client, against a daemon that is written in another
// language and writes down what it reads.
#include "lumofixture.h"

#include <core/orvaplainvalue.h>

class WireTest : public QObject
{
    Q_OBJECT
    QTemporaryDir m_directory;
    PrivateBus m_bus;
    std::unique_ptr<LumoFixture> m_device;

    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    /// What the daemons were told, and their starts, in order; the questions left out.
    QStringList calls() const
    {
        QFile file(path("calls"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll())
            .split(QLatin1Char('\n'))
            .filter(QRegularExpression(QStringLiteral("^(?!InterfaceDetails).")));
    }
    QStringList callsSinceStart() const
    {
        const QStringList all = calls();
        return all.mid(all.lastIndexOf(QStringLiteral("start")) + 1);
    }
    int starts() const { return calls().count(QStringLiteral("start")); }
    void tell(const QString& method, const QVariantList& arguments = {})
    {
        m_device->call(QStringLiteral("org.orva.Test"), method, arguments);
    }
    void emitSignal(const QString& member, const QVariantList& arguments = {})
    {
        tell(QStringLiteral("Emit"), QVariantList{member} + arguments);
    }
    CMReply<QVariant> send(const CMPath& path, const OrvaValue& value = {})
    {
        return m_device->device.send(path, value);
    }
    bool currentCable() { return m_device->device.worker->currentCableStatus(); }

    static QStringList profileCalls()
    {
        return {QStringLiteral("Set(s:org.orva.lumod, s:WirelessNetworks, v:a{sv}("
                               "Café=v:a{sv}(priority=v:i:1, wpa_psk=v:s:secret-Café), "
                               "Home=v:a{sv}(priority=v:i:2, wpa_psk=v:s:secret-Home)))"),
                QStringLiteral("Set(s:org.orva.lumod, s:WiredIpSettings, v:a{sv}("
                               "Dns=v:s:1.1.1.1 9.9.9.9, Gateway=v:s:, Ip=v:s:10.0.0.2, "
                               "Netmask=v:s:255.0.0.0))"),
                QStringLiteral("Set(s:org.orva.lumod, s:WirelessIpSettings, v:a{sv}())"),
                QStringLiteral("SetNormalMode(s:auto)")};
    }
    static QString softApCall()
    {
        return QStringLiteral(
            "StartSoftAp(s:uap0, a{sv}(apInterface=v:s:uap0, channel=v:i:6, ssid=v:s:Setup))");
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_bus.addService(QStringLiteral("org.orva.lumod"),
                         QStringLiteral("/usr/bin/python3 -B %1 %2")
                             .arg(QFINDTESTDATA("fakelumod.py"), m_directory.path()));
        QVERIFY(m_bus.start());
    }
    void init() { m_device = std::make_unique<LumoFixture>(m_bus); }
    void cleanup()
    {
        const bool isUp = m_device->daemonPid() != 0;
        m_device.reset();
        if (isUp) {
            QDBusConnection bus = m_bus.connection(QStringLiteral("cleanup"));
            bus.call(QDBusMessage::createMethodCall(
                QStringLiteral("org.orva.lumod"), QStringLiteral("/org/orva/lumod"),
                QStringLiteral("org.orva.Test"), QStringLiteral("Exit")));
            QDBusConnection::disconnectFromBus(QStringLiteral("cleanup"));
        }
        for (const char* name : {"calls", "delay", "crash"})
            QFile::remove(path(name));
    }

    void everyCommandHasItsTypesAndItsPlace()
    {
        QStringList expected = profileCalls();
        send(OrvaNetworkStartPath());
        send(OrvaNetworkForceWifiReconnectPath());
        const auto softAp = send(OrvaNetworkRequestSoftApPath(), LumoFixture::softApRequest());
        const auto pin = send(OrvaNetworkPerformWpsPinPath(), toValue(QStringLiteral("12345670")));
        expected << QStringLiteral("ForceWifiReconnect()") << softApCall()
                 << QStringLiteral("WpsPin(s:12345670)");
        QTRY_COMPARE(callsSinceStart(), expected);

        emitSignal(QStringLiteral("Connected"), {QStringLiteral("uap0")});
        QTRY_VERIFY(softAp.isFinished());
        emitSignal(QStringLiteral("WpsCredentials"),
                   {QVariantMap{{QStringLiteral("ssid"), QStringLiteral("A")},
                                {QStringLiteral("type"), QStringLiteral("wpa-psk")},
                                {QStringLiteral("wpa_psk"), QStringLiteral("secret99")}}});
        QTRY_VERIFY(pin.isFinished());
        QCOMPARE(OrvaValue(pin.value().toHash()).networkInterface().key(),
                 QStringLiteral("secret99"));

        emitSignal(QStringLiteral("InterfaceStatusChanged"), {QStringLiteral("wlan0"), 2});
        QTRY_COMPARE(m_device->backend->interfaceStatus(QStringLiteral("wlan0")),
                     Networking_LowLevel::Idle);
        send(OrvaNetworkPerformWpsPbcPath());
        send(OrvaNetworkScanPath());
        send(OrvaNetworkStopPath());
        expected << QStringLiteral("WpsPbc()") << QStringLiteral("Scan()")
                 << QStringLiteral("SetOffMode()") << QStringLiteral("StopSoftAp(s:uap0)");
        QTRY_COMPARE(callsSinceStart(), expected);
    }

    void everyWidthOfIntegerReadsAlike()
    {
        const OrvaNetworkInfo info = m_device->device.info();
        QCOMPARE(info.wired().mac(), QStringLiteral("02:00:00:00:00:01"));
        QVERIFY(info.wired().cableConnected());

        emitSignal(QStringLiteral("AddressesChanged"));
        QTRY_COMPARE(m_device->device.info().wireless().signalLevel(), -61);
        const OrvaNetworkWirelessInterface wireless = m_device->device.info().wireless();
        QCOMPARE(wireless.frequency(), 2412);
        QCOMPARE(wireless.channel(), 1);
        QCOMPARE(wireless.mac(), QString());
        QVERIFY(wireless.addresses().isEmpty());
        QCOMPARE(m_device->device.info().wired().addresses().value(0).prefix(), 24);

        QSignalSpy scanned(m_device->backend, &Networking_LowLevel::ScanResults);
        emitSignal(
            QStringLiteral("ScanResults"),
            {QVariantMap{
                {QStringLiteral("bad"), 5},
                {QStringLiteral("Café"),
                 QVariantMap{{QStringLiteral("type"), QStringLiteral("wpa_psk")},
                             {QStringLiteral("signal"), QVariant::fromValue<short>(-70)},
                             {QStringLiteral("channel"), QVariant::fromValue<uchar>(11)},
                             {QStringLiteral("frequency"), QVariant::fromValue<qulonglong>(2462)},
                             {QStringLiteral("ies"), QByteArray("\x00\xff", 2)}}}}});
        QTRY_COMPARE(scanned.size(), 1);
        const auto results = scanned.at(0).at(0).value<QVector<OrvaNetworkScanResult>>();
        QCOMPARE(results.size(), 1);
        QCOMPARE(OrvaPlain::toJson(results.at(0).__variant()),
                 QByteArray(R"({"bssid":"","channel":11,"encryption":2,"frequency":2462,)"
                            R"("ies":"00ff","signal":-70,"ssid":"Café"})"));
    }

    void whoDoesNotOwnTheNameIsNotHeard()
    {
        QTRY_VERIFY(currentCable());
        auto forged = QDBusMessage::createSignal(QStringLiteral("/org/orva/lumod"),
                                                 QStringLiteral("org.orva.lumod"),
                                                 QStringLiteral("CableStatus"));
        forged << false;
        QVERIFY(m_device->connection().send(forged));
        emitSignal(QStringLiteral("Connected"), {QStringLiteral("eth0")});
        QTRY_VERIFY(m_device->device.worker->linkStatus());
        QVERIFY(currentCable());
        emitSignal(QStringLiteral("CableStatus"), {false}); // the same from the right one
        QTRY_VERIFY(!currentCable());
    }

    void aDaemonThatHangsCostsTwoSecondsOnce()
    {
        send(OrvaNetworkStartPath());
        QTRY_COMPARE(callsSinceStart().size(), 4);
        QSignalSpy refreshed(m_device->backend, &Networking_LowLevel::AddressesChanged);
        auto hang = QDBusMessage::createMethodCall(
            QStringLiteral("org.orva.lumod"), QStringLiteral("/org/orva/lumod"),
            QStringLiteral("org.orva.Test"), QStringLiteral("Hang"));
        m_device->connection().asyncCall(hang << 4000);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(m_device->backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() > 1900 && clock.restart() < 3500);
        for (int i = 0; i < 100; ++i)
            QVERIFY(m_device->backend->getEthernetMAC().isEmpty());
        send(OrvaNetworkForceWifiReconnectPath());
        QTest::qWait(100);
        QVERIFY(m_device->backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() < 1000);

        QTRY_COMPARE(refreshed.size(), 1);
        QVERIFY(!m_device->backend->getEthernetMAC().isEmpty());
        QTRY_COMPARE(callsSinceStart().value(4), QStringLiteral("ForceWifiReconnect()"));
    }

    void theStartWaitsForASlowDaemon()
    {
        cleanup();
        write("delay", "3");
        init();
        QCOMPARE(m_device->device.info().wired().mac(), QStringLiteral("02:00:00:00:00:01"));
        QCOMPARE(starts(), 1);
    }

    void aDaemonThatIsLostComesBackAsItWas()
    {
        send(OrvaNetworkStartPath());
        send(OrvaNetworkRequestSoftApPath(), LumoFixture::softApRequest());
        const auto wps = send(OrvaNetworkPerformWpsPbcPath());
        emitSignal(QStringLiteral("Connected"), {QStringLiteral("eth0")});
        QTRY_VERIFY(m_device->device.worker->linkStatus());

        tell(QStringLiteral("Exit"));
        QTRY_VERIFY(wps.isFinished());
        QCOMPARE(WorkerFixture::outcome(wps), QStringLiteral("WpsError: Networking restarted!"));
        QVERIFY(!m_device->device.worker->linkStatus());
        QTRY_COMPARE(callsSinceStart(), profileCalls() << softApCall());
        QCOMPARE(starts(), 2);
    }

    void aCrashLoopSlowsDown()
    {
        send(OrvaNetworkStartPath());
        QTRY_COMPARE(callsSinceStart(), profileCalls());
        write("crash", {});
        tell(QStringLiteral("Exit"));
        QTRY_COMPARE(starts(), 3);
        QElapsedTimer clock;
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(starts(), 5, 15000);
        QVERIFY(clock.elapsed() > 2500); // 1 s, then 2 s
        QFile::remove(path("crash"));
        QTRY_COMPARE_WITH_TIMEOUT(callsSinceStart(), profileCalls(), 15000);
    }

    void aWpsSessionThatNeverEndsIsGivenUp()
    {
        send(OrvaNetworkStartPath());
        const auto first = send(OrvaNetworkPerformWpsPbcPath());
        QTRY_VERIFY(m_device->wpsTimer()->isActive());
        QCOMPARE(m_device->wpsTimer()->interval(), 130000);
        m_device->wpsTimer()->start(1);
        QTRY_VERIFY(first.isFinished());
        QCOMPARE(WorkerFixture::outcome(first), QStringLiteral("WpsError: WPS request timed out"));
        const auto second = send(OrvaNetworkPerformWpsPbcPath());
        QTRY_COMPARE(callsSinceStart().count(QStringLiteral("WpsPbc()")), 2);
        QVERIFY(!second.isFinished());
    }
};

QTEST_GUILESS_MAIN(WireTest)
#include "tst_wire.moc"
