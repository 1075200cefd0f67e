#include "radiosupport.h"

namespace {

constexpr auto timerName = "m_releaseWifiResourceTimer";

/// A directory that comes first in PATH while it lives, with or without an rfkill of its own.
class ProgramPath
{
public:
    explicit ProgramPath(const QByteArray& rfkill)
        : m_old(qgetenv("PATH"))
    {
        QFile program(m_directory.filePath(QStringLiteral("rfkill")));
        if (!rfkill.isEmpty() && program.open(QIODevice::WriteOnly)) {
            program.write("#!/bin/sh\n" + rfkill);
            program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        }
        qputenv("PATH", m_directory.path().toLocal8Bit());
    }
    ~ProgramPath() { qputenv("PATH", m_old); }
    Q_DISABLE_COPY(ProgramPath)

private:
    QTemporaryDir m_directory;
    QByteArray m_old;
};

OrvaValue airplaneModeType(OrvaAirplaneModeType type)
{
    OrvaValue value;
    value.setAirplaneModeType(type);
    return value;
}

} // namespace

class TestSwitches : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void appliesTheStoredAirplaneMode_data()
    {
        QTest::addColumn<bool>("stored");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("calls");
        QTest::newRow("off, Wi-Fi only") << false << 1 << "unblock all, block wifi, unblock all";
        QTest::newRow("on, every radio") << true << 0 << "block all, unblock all, block all";
    }

    void appliesTheStoredAirplaneMode()
    {
        QFETCH(bool, stored);
        QFETCH(int, type);
        WorkerFixture fixture({{OrvaNetworkAirplaneModeSettingPath(), toValue(stored)},
                               {OrvaNetworkAirplaneModeTypeSettingPath(),
                                airplaneModeType(static_cast<OrvaAirplaneModeType::Value>(type))}});
        QCOMPARE(fixture.info().airplaneMode(), stored);
        for (const bool on : {!stored, stored}) {
            fixture.root.setValue(OrvaNetworkAirplaneModePath(), toValue(on), {});
            fixture.settle();
            QCOMPARE(fixture.info().airplaneMode(), on);
            QCOMPARE(fixture.value(OrvaNetworkAirplaneModeSettingPath()).bool_(), on);
        }
        QTEST(fixture.rfkillCalls().join(QStringLiteral(", ")), "calls");
    }

    void switchesAlsoWhereRfkillFails_data()
    {
        QTest::addColumn<QByteArray>("rfkill");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("exits with 1") << QByteArray("exit 1");
        QTest::newRow("hangs") << QByteArray("exec /bin/sleep 60");
    }

    void switchesAlsoWhereRfkillFails()
    {
        QFETCH(QByteArray, rfkill);
        WorkerFixture fixture;
        const ProgramPath path(rfkill);
        QElapsedTimer blocked;
        blocked.start();
        fixture.worker->on_airplaneMode_changed(toValue(true));
        QVERIFY(blocked.elapsed() < 7000);
        fixture.settle();
        QVERIFY(fixture.info().airplaneMode());
        QVERIFY(fixture.value(OrvaNetworkAirplaneModeSettingPath()).bool_());
    }

    void readsTheSignal()
    {
        WorkerFixture fixture;
        const auto reply = fixture.send(OrvaNetworkWirelessRssiPath());
        fixture.settle();
        QCOMPARE(OrvaValue(reply.value().toHash()).double_(), -50.0);
        fixture.backend->rssi = 0.0;
        QCOMPARE(fixture.request(OrvaNetworkWirelessRssiPath()),
                 QStringLiteral("Error: Unable to get wireless rssi"));
    }

    void answersReconnectWhateverTheBackendSays()
    {
        WorkerFixture fixture;
        fixture.backend->refused << QStringLiteral("forceWifiReconnect");
        QCOMPARE(fixture.request(OrvaNetworkForceWifiReconnectPath()), QString());
        QCOMPARE(fixture.backend->commands, {QStringLiteral("forceWifiReconnect")});
    }

    /// The radio is asked for on every claim and let go once, after the last one ended.
    void claimsTheRadioForADay()
    {
        WorkerFixture fixture({{OrvaNetworkCurrentProfileSettingsPath(),
                                toValue(profileWith({QStringLiteral("Home")}))}});
        const QTimer* const timer = fixture.timer(QLatin1String(timerName));
        // "." while the release is due.
        const auto power = [&] {
            const QString requests = powerRequests(fixture);
            return timer->isActive() ? requests + QLatin1Char('.') : requests;
        };
        fixture.request(OrvaNetworkStartPath());
        // A release while another claim holds asks again.
        QCOMPARE(power(), QStringLiteral("++"));
        fixture.send(OrvaNetworkScanPath());
        QCOMPARE(power(), QStringLiteral("+++"));
        Q_EMIT fixture.backend->ScanResults({});
        QCOMPARE(power(), QStringLiteral("++++"));
        fixture.worker->setLinkStatus(QStringLiteral("eth0"), true);
        QCOMPARE(power(), QStringLiteral("+++++."));
        fixture.send(OrvaNetworkPerformWpsPbcPath());
        QCOMPARE(power(), QStringLiteral("++++++"));
        fixture.backend->wpsReply.finish(OrvaNetworkInterface());
        QCOMPARE(power(), QStringLiteral("++++++."));
        fixture.request(OrvaNetworkStopPath());
        QVERIFY(fixture.fire(QLatin1String(timerName)));
        QCOMPARE(power(), QStringLiteral("++++++-"));
    }
};

QTEST_GUILESS_MAIN(TestSwitches)
#include "tst_switches.moc"
