#include <orvaprocesshandler.h>

#include <QtTest>

using End = OrvaProcessHandlerResult::End;

Q_DECLARE_METATYPE(End)

namespace {

QStringList script(const QString& text)
{
    return {QStringLiteral("-c"), text};
}

} // namespace

class ProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRunEndsInOneWay_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("text");
        QTest::addColumn<End>("end");
        const auto row = [](const char* name, const char* program, const char* text, End end) {
            QTest::newRow(name) << QString::fromLatin1(program) << QString::fromLatin1(text) << end;
        };
        row("success", "sh", "echo both; echo both >&2", End::Exited);
        row("failure", "sh", "echo both; echo both >&2; exit 3", End::Exited);
        row("no such program", "/no/such", "", End::NotStarted);
        row("a signal", "sh", "kill -SEGV $$", End::Crashed);
        row("too long", "sh", "exec sleep 60", End::TimedOut);
    }

    void aRunEndsInOneWay()
    {
        QFETCH(QString, program);
        QFETCH(QString, text);
        QFETCH(End, end);
        const int limit = end == End::TimedOut ? 50 : 10000;
        QVector<OrvaProcessHandlerResult> results = {
            OrvaProcessHandler::startSync(program, script(text), limit)};
        OrvaProcessHandler handler;
        handler.startAsync(program, script(text), limit,
                           [&results](const auto& result) { results << result; });
        QTRY_COMPARE(results.size(), 2);
        for (const auto& result : qAsConst(results)) {
            QCOMPARE(result.end(), end);
            QCOMPARE(result.finishedOk(), qstrcmp(QTest::currentDataTag(), "success") == 0);
            if (end == End::Exited)
                QCOMPARE(result.getData(), QStringLiteral("both\nboth\n"));
        }
        QVERIFY(!handler.isRunning());
    }

    void aNewRunEndsTheOldOneInSilenceAndAKilledOneSaysSo()
    {
        OrvaProcessHandler handler;
        QStringList lines;
        handler.startAsync(QStringLiteral("sleep"), {QStringLiteral("60")}, 0,
                           [&lines](const auto&) { lines << QStringLiteral("old"); });
        handler.startAsync(
            QStringLiteral("sh"),
            script(QStringLiteral("printf 'one\\ntw'; sleep 0.05; printf 'o\\n'")), 0,
            [&lines](const auto&) { lines << QStringLiteral("end"); },
            [&lines](const QStringList& more, auto) { lines << more; });
        QTRY_VERIFY(lines.contains(QStringLiteral("end")));
        QCOMPARE(lines.join(QLatin1Char(' ')), QStringLiteral("one two end"));
        End end = End::Exited;
        handler.startAsync(QStringLiteral("sleep"), {QStringLiteral("60")}, 0,
                           [&end](const auto& result) { end = result.end(); });
        handler.kill();
        QTRY_COMPARE(end, End::Killed);
    }
};

QTEST_GUILESS_MAIN(ProcessTest)
#include "tst_process.moc"
