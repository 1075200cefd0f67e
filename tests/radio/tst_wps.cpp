#include "radiosupport.h"

#include "wps/wpspin.h"

namespace {

/// A worker that goes through WPS sessions: a word for each request and for what becomes of it;
/// any other word is a PIN.
class WpsUser : public WorkerFixture
{
public:
    QVector<CMReply<QVariant>> replies;

    void run(const QByteArray& script)
    {
        for (const QByteArray& word : script.split(' ')) {
            if (word == "pbc")
                replies << send(OrvaNetworkPerformWpsPbcPath());
            else if (word == "refuse")
                backend->refused = QStringList{"performWpsPbc"_s, "performWpsPin"_s};
            else if (word == "end")
                backend->wpsReply.finish(wpaNetwork("Home"_s));
            else if (word == "fail")
                backend->wpsReply.setError(CMError("WpsError"_s, "no router"_s));
            else if (word == "dropped")
                backend->wpsReply = {};
            else
                replies << send(OrvaNetworkPerformWpsPinPath(),
                                OrvaValue::of(QString::fromLatin1(word)));
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
        const auto row = [](const char* script, const char* answers, const char* wps,
                            const char* message, const char* power) {
            QTest::newRow(script) << answers << wps << message << power;
        };
        const char* const done = "WPS finished successfully!";
        row("pbc", "no answer", "1 0 ", "WPS in progress...", "+");
        row("12345678", "no answer", "1 1 ", "WPS PIN in progress...", "+");
        row("pbc end", "ok", "2 0 ", done, "+-");
        row("pbc fail", "WpsError: no router", "3 0 no router", "WPS failed: no router", "+-");
        row("pbc fail 12345678 end", "WpsError: no router; ok", "2 1 no router", done, "++-");
        row("refuse pbc", "error: WPS request failed.", "1 0 ", "WPS in progress...", "+-");
        row("pbc dropped 12345670 end", "Dropped: The request was dropped without an answer.; ok",
            "2 1 The request was dropped without an answer.", done, "++-");
    }

    void runsOneSession()
    {
        WpsUser user;
        user.run(QTest::currentDataTag());
        QTEST(outcomes(user.replies), "answers");
        const OrvaNetworkWps wps = user.info().wireless().wps();
        QTEST("%1 %2 %3"_s.arg(wps.status()).arg(wps.type()).arg(wps.lastError()), "wps");
        QTEST(user.value(OrvaNetworkConnectingMessage()).string_(), "message");
        user.fire(releaseTimer);
        QTEST(powerRequests(user), "power");
    }

    void handsCredentialsOnAndAppliesThem()
    {
        WpsUser user;
        user.run("12345670 end");
        QCOMPARE(user.backend->wpsPin, "12345670"_s);
        const OrvaValue credentials(user.replies.first().value().toHash());
        QCOMPARE(user.request(OrvaNetworkApplyWpsPath(), credentials),
                 "error: Networking is not started."_s);
        user.request(OrvaNetworkStartPath());
        QCOMPARE(user.request(OrvaNetworkApplyWpsPath(), credentials), QString());
        QCOMPARE(OrvaHash(user.backend->profiles.last().wireless()),
                 OrvaHash(wpaNetwork("Home"_s)));
    }
};

QTEST_GUILESS_MAIN(TestWps)
#include "tst_wps.moc"
