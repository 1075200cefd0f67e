// SPDX-License-Identifier: Apache-2.0
#include "diskcalls.h"
#include "hostconfig.h"
#include "hostlog.h"
#include "logcapture.h"
#include "settingsfile.h"
#include "values.h"

#include "common/hostnodes.h"
#include "network/networkpaths.h"

#include <QRandomGenerator>
#include <QtTest>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

/// Puts something in the place of a file; 0 where it is done.
using Make = std::function<int(const char* file)>;
Q_DECLARE_METATYPE(Make)
/// Ends the wait of a write.
using End = std::function<void(Settings& settings, const CMVoidReply& last)>;
Q_DECLARE_METATYPE(End)

namespace {

CMPath maxFailures()
{
    return OrvaNetworkMaxAuthFailuresSettingsPath();
}

/// Stores 1, 2, 3 … and tells of each through `acknowledge` when it is stored, until it is killed.
[[noreturn]] void storeForEver(const QString& directory, int acknowledge)
{
    ::umask(0);
    SettingsFile file(directory);
    for (qint32 i = 1; file.put(maxFailures(), OrvaValue::of(i)) && file.commit(); ++i)
        (void)!::write(acknowledge, &i, sizeof i);
    ::_exit(1);
}

} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatQtSaysIsOneLine()
    {
        const HostLog hostLog;
        LogCapture& log = LogCapture::install();
        qWarning("no \"%s\"", "\n\u009b");
        QCOMPARE(log.count("no \"\\u000a\\u009b\""_s), 1);
    }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_directory = m_home->filePath("a/state"_s);
        m_file = m_directory + "/settings.json"_s;
        DiskCalls::refused.clear();
        DiskCalls::made.clear();
    }

    void aKilledWriteLosesNothingThatWasReported()
    {
        for (int round = 0; round < 100; ++round) {
            int ends[2];
            QCOMPARE(::pipe(ends), 0);
            const pid_t writer = ::fork();
            if (writer == 0)
                storeForEver(m_directory, ends[1]);
            ::close(ends[1]);
            qint32 reported = 0;
            QCOMPARE(::read(ends[0], &reported, sizeof reported), ssize_t(sizeof reported));
            ::usleep(QRandomGenerator::global()->bounded(3000));
            ::kill(writer, SIGKILL);
            ::waitpid(writer, nullptr, 0);
            while (::read(ends[0], &reported, sizeof reported) == sizeof reported) {
            }
            ::close(ends[0]);

            auto made = QDir(m_directory).entryInfoList(QDir::Files | QDir::Hidden);
            made << QFileInfo(m_directory);
            for (const QFileInfo& file : std::as_const(made))
                QVERIFY(!(file.permissions() & QFile::Permissions(0x0077)));
            const auto stored = SettingsFile(m_directory).take(maxFailures(), OrvaValue::of(0));
            QVERIFY(stored.has_value());
            QVERIFY(stored->i32_() == reported || stored->i32_() == reported + 1);
            QCOMPARE(files(), QStringList("settings.json"_s));
        }
    }

    void aFileThatIsNotOursIsSetAside_data()
    {
        QTest::addColumn<Make>("make");
        const auto row = [](const char* what, const Make& make) { QTest::newRow(what) << make; };
        row("a directory", [](const char* file) { return ::mkdir(file, S_IRWXU); });
        row("a pipe", [](const char* file) { return ::mkfifo(file, S_IRWXU); });
        row("a link", [](const char* file) {
            const QByteArray other = file + QByteArray(".other");
            return ::rename(file, other) == 0 ? ::symlink(other, file) : -1;
        });
        if (::geteuid() == 0)
            row("another user's", [](const char* file) { return ::chown(file, 12345, 12345); });
    }

    void aFileThatIsNotOursIsSetAside()
    {
        QFETCH(Make, make);
        put(R"({"settings/network/max-auth-failures": {"i32": 7}})");
        const QByteArray path = QFile::encodeName(m_file);
        if (make(path) != 0)
            QVERIFY(::unlink(path) == 0 && make(path) == 0);
        Settings settings(networkSettingDefaults(), m_directory);
        QCOMPARE(valueOf(settings, maxFailures()), OrvaValue::of(3));
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(8)), QString());
        QCOMPARE(
            QDir(m_directory).entryList({"*damaged*"_s}, QDir::AllEntries | QDir::System).size(),
            1);
    }

    void aDamagedFileIsSetAside_data()
    {
        QTest::addColumn<QByteArray>("content");
        const auto entry = [](const QByteArray& value) {
            return "{\"settings/network/max-auth-failures\": " + value + "}";
        };
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("truncated") << entry("{\"i3").chopped(1);
        QTest::newRow("not JSON") << QByteArray("\177ELF\0\1", 6);
        QTest::newRow("a list") << QByteArray("[1, 2]");
        QTest::newRow("too large") << entry(R"({"i32": 7})") + QByteArray(64 << 20, ' ');
        QTest::newRow("10 000 levels") << QByteArray(10000, '[') + QByteArray(10000, ']');
        for (const char* value :
             {"5", R"({"i32": null})", R"({"string": "5"})", R"({"i32": 3000000000})",
              R"({"i32": 1, "x": "\u0000"})", R"({"i32": 1, "x": "\ud800"})",
              R"({"i32": [[[[[[[[[[[[[]]]]]]]]]]]]]})"})
            QTest::addRow("%s", value) << entry(value);
    }

    void aDamagedFileIsSetAside()
    {
        QFETCH(QByteArray, content);
        put(content);
        Settings settings(networkSettingDefaults(), m_directory);
        QCOMPARE(valueOf(settings, maxFailures()), OrvaValue::of(3));
        const QStringList aside = QDir(m_directory).entryList({"settings.json.damaged-*"_s});
        QCOMPARE(aside.size(), 1);
        QFile kept(m_directory + "/"_s + aside.first());
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), content);

        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(7)), QString());
        const Settings next(networkSettingDefaults(), m_directory);
        QCOMPARE(files().size(), 2);
    }

    void whatIsDamagedAndCannotBeKeptIsNotOverwritten_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("rename") << QByteArray("not JSON");
        QTest::newRow("link") << QByteArray(R"({"settings/network/max-auth-failures": 5})");
    }

    void whatIsDamagedAndCannotBeKeptIsNotOverwritten()
    {
        QFETCH(QByteArray, content);
        put(content);
        DiskCalls::refused = QString::fromLatin1(QTest::currentDataTag());
        Settings settings(networkSettingDefaults(), m_directory);
        DiskCalls::refused.clear();
        QVERIFY(!(QFileInfo(m_file).permissions() & QFile::Permissions(0x0077)));
        QVERIFY(!fault(settings).isEmpty());
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(7)), "NotStored"_s);
        QCOMPARE(stored(), content);
    }

    void damagedEntriesLeaveTheOthersAndTheUnknown()
    {
        put(R"({"settings/network/max-auth-failures": 1, "settings/network/airplane-mode": 1,
                "settings/network/backup-profile": {"networkProfile": {"later": [1]}},
                "settings/of/another": {"secret": [1]}})");
        const LogCapture& log = LogCapture::install();
        Settings settings(networkSettingDefaults(), m_directory);
        QCOMPARE(log.count("settings/of/another"_s), 1);
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(8)), QString());
        Settings next(networkSettingDefaults(), m_directory);
        QCOMPARE(valueOf(next, OrvaNetworkBackupProfileSettingsPath()),
                 json(R"({"networkProfile": {"later": [1]}})"));
        QVERIFY(stored().contains("settings/of/another"));
        QCOMPARE(files().size(), 2); // It and the one copy of what it was.
    }

    void aWriteThatTheDiskRefusesChangesNothing_data()
    {
        QTest::addColumn<int>("calls");
        const QStringList calls{"open"_s, "write"_s, "sync file"_s, "rename"_s, "sync directory"_s};
        for (int i = 0; i < calls.size(); ++i)
            QTest::addRow("%s", qPrintable(calls.at(i))) << i + 1;
    }

    void aWriteThatTheDiskRefusesChangesNothing()
    {
        QFETCH(int, calls);
        Settings settings(networkSettingDefaults(), m_directory);
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(8)), QString());
        QCOMPARE(DiskCalls::made,
                 QStringList({"open"_s, "write"_s, "sync file"_s, "rename"_s, "sync directory"_s}));
        DiskCalls::made.clear();
        DiskCalls::refused = QString::fromLatin1(QTest::currentDataTag());
        const auto other = CMReply<QVariant>::create();
        settings.setValue(OrvaNetworkMaxNumberWifiNetworks(), OrvaValue::of(5), other);
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(9)), "NotStored"_s);
        QCOMPARE(other.error().name(), "NotStored"_s);
        QCOMPARE(DiskCalls::made.mid(0, calls).last(), DiskCalls::refused);
        QVERIFY(fault(settings).contains("Input/output error"_s));
        QCOMPARE(valueOf(settings, maxFailures()), OrvaValue::of(8));
        QCOMPARE(files(), QStringList("settings.json"_s));
        QCOMPARE(afterRestart(), OrvaValue::of(8));
        DiskCalls::refused.clear();
        QCOMPARE(write(settings, OrvaNetworkMaxNumberWifiNetworks(), OrvaValue::of(4)), QString());
        QCOMPARE(fault(settings), QString());
        QCOMPARE(afterRestart(), OrvaValue::of(8));
    }

    void aPlaceThatCannotBeWrittenIsToldFromTheStart()
    {
        QFile file(m_home->filePath("a"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        Settings settings(networkSettingDefaults(), m_directory);
        QVERIFY(fault(settings).contains(m_directory));
        QCOMPARE(write(settings, HostSettingsFaultPath(), OrvaValue::of(QString())), "ReadOnly"_s);
        QVERIFY(file.remove());
        QVERIFY(QDir().mkpath(m_directory));
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(7)), QString());
        QCOMPARE(fault(settings), QString());
    }

    void whatCouldNotBeReadBackIsRefused_data()
    {
        QTest::addColumn<OrvaValue>("value");
        QTest::addColumn<int>("stored"); // bytes of it all
        QVariant deep = 1;
        for (int i = 0; i < 11; ++i)
            deep = QVariantHash{{"x"_s, deep}};
        const auto row = [](const char* what, const QVariant& more, int stored = 100) {
            const QVariantHash profile{{"x"_s, more}};
            QTest::newRow(what) << OrvaValue(QVariantHash{{"networkProfile"_s, profile}}) << stored;
        };
        row("too deep", deep);
        row("too large", QString(1 << 20, QLatin1Char('x')));
        row("half a character", QString(QChar(0xd800)));
        row("too much in all", QString(1000, QLatin1Char('x')), 64 << 20);
    }

    void whatCouldNotBeReadBackIsRefused()
    {
        QFETCH(OrvaValue, value);
        QFETCH(int, stored);
        put(QByteArray("{\"of/another\": \"\"}").insert(16, QByteArray(stored - 18, 'x')));
        Settings settings(networkSettingDefaults(), m_directory);
        const CMPath profile = OrvaNetworkBackupProfileSettingsPath();
        const OrvaValue before = valueOf(settings, profile);
        QCOMPARE(write(settings, profile, value), "NotStored"_s);
        QCOMPARE(valueOf(settings, profile), before);
        QVERIFY(DiskCalls::made.isEmpty());
        write(settings, maxFailures(), OrvaValue::of(8)); // without what was refused
        const Settings next(networkSettingDefaults(), m_directory);
        QCOMPARE(files(), QStringList("settings.json"_s));
    }

    void aDefaultThatWasSetIsStored()
    {
        Settings settings(networkSettingDefaults(), m_directory);
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(3)), QString());
        settings.invoke(maxFailures(), OrvaValue::of(7), {});
        QCoreApplication::processEvents();
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(true)), "MalformedValue"_s);
        Settings next({{maxFailures(), OrvaValue::of(5)}}, m_directory);
        QCOMPARE(valueOf(next, maxFailures()), OrvaValue::of(3));
    }

    void whatIsWrittenTogetherIsStoredTogetherAndThenAnswered_data()
    {
        QTest::addColumn<End>("end");
        QTest::newRow("the turn ends")
            << End([](Settings&, const CMVoidReply&) { QCoreApplication::processEvents(); });
        QTest::newRow("somebody waits")
            << End([](Settings&, const CMVoidReply& last) { last.data()->hurry(); });
        QTest::newRow("somebody reads") << End([](Settings& settings, const CMVoidReply&) {
            QCOMPARE(valueOf(settings, maxFailures()), OrvaValue::of(8));
        });
    }

    void whatIsWrittenTogetherIsStoredTogetherAndThenAnswered()
    {
        QFETCH(End, end);
        Settings settings(networkSettingDefaults(), m_directory);
        CMReply<QVariant> last;
        for (const qint32 value : {7, 3, 8}) {
            last = CMReply<QVariant>::create();
            last.addWatcher([](const auto&) { DiskCalls::made << "answer"_s; });
            settings.setValue(maxFailures(), OrvaValue::of(value), last);
        }
        QVERIFY(DiskCalls::made.isEmpty());
        end(settings, last);
        QCOMPARE(DiskCalls::made.mid(4),
                 QStringList({"sync directory"_s, "answer"_s, "answer"_s, "answer"_s}));
        QCOMPARE(valueOf(settings, maxFailures()), OrvaValue::of(8));
        // Stored values are not written again; those that wait at the end are.
        DiskCalls::made.clear();
        QCOMPARE(write(settings, maxFailures(), OrvaValue::of(8)), QString());
        QVERIFY(DiskCalls::made.isEmpty());
        Settings(networkSettingDefaults(), m_directory)
            .setValue(maxFailures(), OrvaValue::of(9), {});
        QCOMPARE(afterRestart(), OrvaValue::of(9));
    }

    void theExampleShowsTheDefaults()
    {
        const auto example = readHostConfig(QStringLiteral(ORVA_EXAMPLE));
        QVERIFY2(example, qPrintable(example.why()));
        const auto defaults = networkSettingDefaults();
        QCOMPARE(example->settings.size(), defaults.size());
        for (int i = 0; i < defaults.size(); ++i)
            QCOMPARE(example->settings.at(i).value, defaults.at(i).value);
    }

private:
    void put(const QByteArray& content) const
    {
        QVERIFY(QDir().mkpath(m_directory));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_directory).entryList(QDir::Files | QDir::Hidden);
    }
    [[nodiscard]] QByteArray stored() const
    {
        QFile file(m_file);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    [[nodiscard]] OrvaValue afterRestart() const
    {
        Settings next(networkSettingDefaults(), m_directory);
        return valueOf(next, maxFailures());
    }
    static OrvaValue valueOf(Settings& settings, const CMPath& path)
    {
        return OrvaValue(settings.getValue(path).toHash());
    }
    static QString fault(Settings& settings)
    {
        return valueOf(settings, HostSettingsFaultPath()).string_();
    }
    /// The name of the error that a write ends with.
    static QString write(Settings& settings, const CMPath& path, const OrvaValue& value)
    {
        const auto reply = CMReply<QVariant>::create();
        settings.setValue(path, value, reply);
        return reply.data()->waitForFinished(0) ? reply.error().name() : "no answer"_s;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    QString m_directory;
    QString m_file;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
