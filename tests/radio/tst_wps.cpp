#include "radiosupport.h"

#include <wpsPin.h>

namespace {

/// A worker that goes through WPS sessions: a word for each request and for what becomes of it;
/// any other word is a PIN.
class WpsUser : public WorkerFixture
{
public:
    QVector<CMReply<QVariant>> replies;

    void run(const QByteArray& script)
    {
        const CMError failure(QStringLiteral("WpsError"), TrString("no router"));
        const QStringList starts{QStringLiteral("performWpsPbc"), QStringLiteral("performWpsPin")};
        const auto home = wpaNetwork(QStringLiteral("Home"));
        const QMap<QByteArray, std::function<void()>> steps = {
            {"pbc", [this] { replies << send(OrvaNetworkPerformWpsPbcPath()); }},
            {"refuse", [&] { backend->refused = starts; }},
            {"end", [&] { backend->wpsReply.finish(home); }},
            {"fail", [&] { backend->wpsReply.setError(failure); }},
            {"dropped", [this] { backend->wpsReply = {}; }},
        };
        for (const QByteArray& word : script.split(' ')) {
            const auto pin = [&] {
                replies << send(OrvaNetworkPerformWpsPinPath(), toValue(QString::fromUtf8(word)));
            };
            steps.value(word, pin)();
            settle();
        }
    }
};

} // namespace

class TestWps : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void generatesValidPins()
    {
        WorkerFixture fixture;
        const auto reply = fixture.send(OrvaNetworkGenerateWpsPinPath());
        fixture.settle();
        const QString pin = OrvaValue(reply.value().toHash()).string_();
        QVERIFY(isWpsPin(pin));
        QCOMPARE(pin, wpsPin(pin.toUInt() / 10));
    }

    /// `wps` is status, type and last error of the published record.
    void runsOneSession_data()
    {
        QTest::addColumn<QString>("answers");
        QTest::addColumn<QString>("wps");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("power");
        const char* const runs = "WPS in progress...";
        const char* const runsPin = "WPS PIN in progress...";
        const char* const done = "WPS finished successfully!";
        const char* const failed = "WPS failed: no router";
        const char* const refused = "error: WPS request failed.";
        QTest::newRow("pbc") << "no answer"
                             << "1 0 " << runs << "+";
        QTest::newRow("12345678") << "no answer"
                                  << "1 1 " << runsPin << "+";
        QTest::newRow("pbc end") << "ok"
                                 << "2 0 " << done << "+-";
        QTest::newRow("pbc fail") << "WpsError: no router"
                                  << "3 0 no router" << failed << "+-";
        QTest::newRow("pbc fail 12345678 end") << "WpsError: no router; ok"
                                               << "2 1 no router" << done << "++-";
        QTest::newRow("refuse pbc") << refused << "1 0 " << runs << "+-";
        QTest::newRow("pbc dropped 12345670 end")
            << "Dropped: The request was dropped without an answer.; ok"
            << "2 1 The request was dropped without an answer." << done << "++-";
    }

    void runsOneSession()
    {
        WpsUser user;
        user.run(QTest::currentDataTag());
        QTEST(outcomes(user.replies), "answers");
        const OrvaNetworkWps wps = user.info().wireless().wps();
        QTEST(QStringLiteral("%1 %2 %3").arg(wps.status()).arg(wps.type()).arg(wps.lastError()),
              "wps");
        QTEST(user.value(OrvaNetworkConnectingMessage()).string_(), "message");
        user.fire(QStringLiteral("m_releaseWifiResourceTimer"));
        QTEST(powerRequests(user), "power");
    }

    void handsCredentialsOnAndAppliesThem()
    {
        WpsUser user;
        user.run("12345670 end");
        QCOMPARE(user.backend->wpsPin, QStringLiteral("12345670"));
        const OrvaValue credentials(user.replies.first().value().toHash());
        QCOMPARE(user.request(OrvaNetworkApplyWpsPath(), credentials),
                 QStringLiteral("error: Networking is not started."));
        user.request(OrvaNetworkStartPath());
        QCOMPARE(user.request(OrvaNetworkApplyWpsPath(), credentials), QString());
        QCOMPARE(OrvaHash(user.backend->profiles.last().wireless()),
                 OrvaHash(wpaNetwork(QStringLiteral("Home"))));
    }
};

QTEST_GUILESS_MAIN(TestWps)
#include "tst_wps.moc"
