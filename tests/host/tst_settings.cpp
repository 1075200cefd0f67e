#include "hostconfig.h"
#include "hostlog.h"
#include "logcapture.h"
#include "settingsfile.h"
#include "values.h"

#include <network/networkpaths.h>

#include <QRandomGenerator>
#include <QtTest>

#include <csignal>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
    QString why;
    for (qint32 i = 1; file.store(maxFailures(), number(i), &why); ++i)
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
            for (const QFileInfo& file : qAsConst(made))
                QVERIFY(!(file.permissions() & QFile::Permissions(0x0077)));
            const auto stored = SettingsFile(m_directory).take(maxFailures(), number(0));
            QVERIFY(stored.has_value());
            QVERIFY(stored->i32_() == reported || stored->i32_() == reported + 1);
            QCOMPARE(files(), QStringList("settings.json"_s));
        }
    }

    void aFileThatCannotBeReadIsSetAside()
    {
        QVERIFY(QDir().mkpath(m_file));
        Settings settings(networkSettingDefaults(), m_directory);
        QVERIFY(write(settings, maxFailures(), number(7)).error().isEmpty());
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
        QCOMPARE(valueOf(settings, maxFailures()), number(3));
        const QStringList aside = QDir(m_directory).entryList({"settings.json.damaged-*"_s});
        QCOMPARE(aside.size(), 1);
        QFile kept(m_directory + "/"_s + aside.first());
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), content);

        QVERIFY(write(settings, maxFailures(), number(7)).error().isEmpty());
        const Settings next(networkSettingDefaults(), m_directory);
        QCOMPARE(files().size(), 2);
    }

    void oneDamagedEntryLeavesTheOthersAndTheUnknown()
    {
        put(R"({"settings/network/max-auth-failures": 1, "settings/network/airplane-mode": {"bool": true},
                "settings/of/another": {"secret": [1]}})");
        Settings settings(networkSettingDefaults(), m_directory);
        QVERIFY(write(settings, maxFailures(), number(8)).error().isEmpty());
        const Settings next(networkSettingDefaults(), m_directory);
        QVERIFY(valueOf(settings, OrvaNetworkAirplaneModeSettingPath()).bool_());
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("settings/of/another"));
    }

    void aWriteThatCannotBeStoredFailsAndChangesNothing()
    {
        Settings settings(networkSettingDefaults(), m_directory);
        QVERIFY(QDir(m_directory).removeRecursively());
        QCOMPARE(write(settings, maxFailures(), number(9)).error().name(), "NotStored"_s);
        QCOMPARE(valueOf(settings, maxFailures()), number(3));
        QVERIFY(write(settings, maxFailures(), number(3)).error().isEmpty());
    }

    void theExampleShowsTheDefaults()
    {
        QString why;
        const auto example = readHostConfig(QStringLiteral(ORVA_EXAMPLE), &why);
        QVERIFY2(example, qPrintable(why));
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
    static OrvaValue valueOf(Settings& settings, const CMPath& path)
    {
        return OrvaValue(settings.getValue(path).toHash());
    }
    static CMReply<QVariant> write(Settings& settings, const CMPath& path, const OrvaValue& value)
    {
        const auto reply = CMReply<QVariant>::create();
        settings.setValue(path, value, reply);
        return reply;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    QString m_directory;
    QString m_file;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
