// SPDX-License-Identifier: Apache-2.0
#include "literals.h"

#include "orvaprocesshandler.h"

#include <QtTest>

#include <sstream>

using End = OrvaProcessHandlerResult::End;

Q_DECLARE_METATYPE(End)

namespace {

QStringList script(const QString& text)
{
    return {"-c"_s, text};
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
        for (const auto& result : std::as_const(results)) {
            QCOMPARE(result.end(), end);
            QCOMPARE(result.finishedOk(), qstrcmp(QTest::currentDataTag(), "success") == 0);
            if (end == End::Exited)
                QCOMPARE(result.getData(), "both\nboth\n"_s);
            std::ostringstream log;
            log << result;
            QVERIFY(log.str().find('\n') == std::string::npos);
        }
        QVERIFY(!handler.isRunning());
    }

    void aNewRunEndsTheOldOneInSilenceAndAKilledOneSaysSo()
    {
        OrvaProcessHandler handler;
        QStringList lines;
        const auto old = [&lines](const auto&) { lines << "old"_s; };
        handler.startAsync("true"_s, {}, 0, old);
        while (handler.isRunning()) // After that, its end waits in the event loop yet.
            QCoreApplication::processEvents();
        handler.startAsync("sleep"_s, {"60"_s}, 0, old);
        handler.startAsync(
            "sh"_s, script("printf 'one\\ntw'; sleep 0.05; printf 'o\\n'"_s), 0,
            [&lines](const auto&) { lines << "end"_s; },
            [&lines](const QStringList& more, auto) { lines << more; });
        QTRY_VERIFY(lines.contains("end"_s));
        QCOMPARE(lines.join(QLatin1Char(' ')), "one two end"_s);
        End end = End::Exited;
        handler.startAsync("sleep"_s, {"60"_s}, 0,
                           [&end](const auto& result) { end = result.end(); });
        handler.kill();
        QTRY_COMPARE(end, End::Killed);
    }
};

QTEST_GUILESS_MAIN(ProcessTest)
#include "tst_process.moc"
