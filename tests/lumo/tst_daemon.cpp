// SPDX-License-Identifier: Apache-2.0
// The worker over the connection daemon's client: what it tells a real daemon on a real bus, and
// what becomes of the daemon's faults. busctl writes down what is on the wire.
#include "backend/lumo/networkinglowlevellumo.h"
#include "network/networkpaths.h"
#include "playedlistener.h"
#include "player.h"
#include "privatebus.h"
#include "tables.h"

#include <QtDBus>

#include <csignal>

// A step of a moment may take many on a busy machine.
#define EVENTUALLY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 20000)
#define EVENTUALLY_EQUAL(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 20000)

namespace {

/// A bus that starts the daemon, and a second look at it.
class Stage
{
public:
    Stage()
    {
        // Starts as slowly as "delay" says, not at all while there is "absent", and ends at once
        // while there is "crash".
        write("start"_s, "cd \"$1\"; [ ! -e absent ] || exit 1\n"
                         "[ ! -e delay ] || sleep \"$(cat delay)\"\n"
                         "[ ! -e crash ] || set -- \"$1\" timeout -s KILL 0.2\n"
                         "shift; exec \"$@\" " ORVA_LUMOD " --world world.json\n");
        bus.addService("org.orva.lumod"_s,
                       "/bin/sh %1 %2"_s.arg(path("start"_s), directory.path()));
    }
    bool start()
    {
        if (!bus.start())
            return false;
        connection = std::make_unique<QDBusConnection>(bus.connection("test"_s));
        monitor.setStandardOutputFile(path("wire"_s));
        monitor.start("busctl"_s, {"--address="_s + bus.address(), "--json=short"_s, "monitor"_s});
        return QTest::qWaitFor([this] { return pid() == 0 && wire().size() > 1; }, 20000);
    }
    QString path(const QString& name) const { return directory.filePath(name); }
    void write(const QString& name, const QByteArray& text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    /// Calls the daemon behind the client's back, and starts none.
    QDBusMessage call(const QString& interface, const QString& method,
                      const QVariantList& arguments)
    {
        auto message = QDBusMessage::createMethodCall("org.orva.lumod"_s, "/org/orva/lumod"_s,
                                                      interface, method);
        message.setArguments(arguments);
        message.setAutoStartService(false);
        const auto mode = method == "Hang"_s || method == "Crash"_s ? QDBus::NoBlock : QDBus::Block;
        return connection->call(message, mode);
    }
    void tell(const QString& method, const QVariantList& arguments = {})
    {
        call("org.orva.lumod.World"_s, method, arguments);
    }
    void say(const QString& signal, const QVariantList& arguments = {})
    {
        tell("Say"_s, {signal, arguments});
    }
    QVariantMap details(const QString& interface)
    {
        const auto reply = call("org.orva.lumod"_s, "InterfaceDetails"_s, {interface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    /// 0 when there is no daemon.
    int pid() const
    {
        return static_cast<int>(connection->interface()->servicePid("org.orva.lumod"_s).value());
    }
    void signalDaemon(int signal) const { QVERIFY(pid() > 0 && ::kill(pid(), signal) == 0); }
    /// Kills the daemon and waits until the bus knows.
    void killDaemon() const
    {
        const int killed = pid();
        signalDaemon(SIGKILL);
        EVENTUALLY(pid() != killed);
    }
    /// Ends the daemon, and removes the files that told it what to do.
    void clean()
    {
        for (const QString& name : {"absent"_s, "delay"_s, "crash"_s})
            QFile::remove(path(name));
        if (pid() > 0)
            killDaemon();
        EVENTUALLY_EQUAL(pid(), 0);
        const QByteArray mark = "mark" + QByteArray::number(m_passed);
        connection->interface()->isServiceRegistered("org.orva."_s + QString::fromLatin1(mark));
        const auto isWritten = [this, &mark] {
            const QList<QByteArray> lines = wire();
            return std::any_of(lines.begin(), lines.end(),
                               [&mark](const QByteArray& line) { return line.contains(mark); });
        };
        EVENTUALLY(isWritten()); // By busctl, and so all that was before it.
        QTest::qWait(50);
        m_passed += wire().size() - 1;
    }

    /// The messages on the wire since `clean()`.
    QList<QByteArray> wire() const
    {
        QFile file(path("wire"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n').mid(m_passed)
                                              : QList<QByteArray>();
    }
    /// The commands to the daemons, and "start" for each of them, in order; the questions left out.
    QStringList told() const
    {
        QStringList calls;
        for (const QByteArray& line : wire()) {
            const QJsonObject message = QJsonDocument::fromJson(line).object();
            const QString member = message["member"_s].toString();
            const QString interface = message["interface"_s].toString();
            const QJsonObject content = message["payload"_s].toObject();
            const QByteArray data =
                QJsonDocument(content["data"_s].toArray()).toJson(QJsonDocument::Compact);
            if (message["type"_s] == "signal"_s && member == "Started"_s)
                calls << "start"_s;
            else if (message["type"_s] == "method_call"_s &&
                     message["destination"_s] == "org.orva.lumod"_s &&
                     interface != "org.orva.lumod.World"_s && member != "InterfaceDetails"_s &&
                     member != "Get"_s)
                calls << (data == "[]" ? member : "%1 %2"_s.arg(member, QString::fromUtf8(data)));
        }
        return calls;
    }

    /// The number of errors that the daemon that runs has answered.
    int refusals() const
    {
        const QString daemon = connection->interface()->serviceOwner("org.orva.lumod"_s);
        const QList<QByteArray> lines = wire();
        return static_cast<int>(
            std::count_if(lines.begin(), lines.end(), [&daemon](const QByteArray& line) {
                const QJsonObject message = QJsonDocument::fromJson(line).object();
                return message["type"_s] == "error"_s && message["sender"_s] == daemon;
            }));
    }

    QTemporaryDir directory;
    PrivateBus bus;
    BoundProcess monitor;
    std::unique_ptr<QDBusConnection> connection;

private:
    int m_passed = 0;
};

/// A device with the soft-AP interface "uap0" and two networks in its stored profile.
class DaemonPlayer : public Player
{
public:
    explicit DaemonPlayer(Stage& stage, const QStringList& steps = {})
        : m_stage(stage)
    {
        give(steps);
        if (steps.contains("given absent"_s))
            m_stage.write("absent"_s, "yes");
        startHost();
        addDaemonEvents();
        addDaemonFacts();
    }
    Networking_LowLevel* backend = nullptr;

private:
    void startHost()
    {
        start([this](NetworkListener& listener) {
            auto client = std::make_unique<Networking_LowLevel_LUMO>(listener);
            backend = client.get();
            return client;
        });
    }
    void addDaemonEvents()
    {
        m_events["lumod"_s] = [this](const QString& what) {
            QVariantList words;
            for (const QString& word : what.split(" "_s)) {
                bool isNumber = false;
                const uint number = word.toUInt(&isNumber);
                words << (isNumber && word.size() < 8 ? QVariant(number) : QVariant(word));
            }
            m_stage.tell(words.takeFirst().toString(), words);
        };
        m_events["say"_s] = [this](const QString& what) {
            QVariantList words;
            for (const QString& word : what.split(" "_s))
                words << word;
            m_stage.say(words.takeFirst().toString(), words);
        };
        // As from a daemon that has gone since.
        m_events["hear"_s] = [this](const QString& signal) {
            QMetaObject::invokeMethod(backend, ("on_lumo_"_s + signal).toLatin1().constData());
        };
        m_events["kill"_s] = [this](const QString&) { m_stage.killDaemon(); };
        m_events["freeze"_s] = [this](const QString&) { m_stage.signalDaemon(SIGSTOP); };
        m_events["thaw"_s] = [this](const QString&) { m_stage.signalDaemon(SIGCONT); };
        m_events["wait"_s] = [](const QString& ms) { QTest::qWait(ms.toInt()); };
        m_events["write"_s] = [this](const QString& what) {
            m_stage.write(what.section(" "_s, 0, 0), what.section(" "_s, 1).toUtf8());
        };
        m_events["delete"_s] = [this](const QString& name) { QFile::remove(m_stage.path(name)); };
        m_events["serve"_s] = [this](const QString&) {
            // One that was under way before may fail, and this one with it.
            EVENTUALLY(m_stage.connection->interface()->startService("org.orva.lumod"_s).isValid());
        };
        m_events["host"_s] = [this](const QString&) { startHost(); };
    }
    void addDaemonFacts()
    {
        m_facts["daemon"_s] = [this] { return m_stage.pid() > 0 ? 1 : 0; };
        m_facts["starts"_s] = [this] { return m_stage.told().count("start"_s); };
        // Since the last start; "told whole" with the profile, which is a word for the other.
        m_facts["told whole"_s] = [this] {
            const QStringList all = m_stage.told();
            return all.mid(all.lastIndexOf("start"_s) + 1).join(" & "_s);
        };
        m_facts["told"_s] = [this] {
            const QRegularExpression calls(
                R"(Set .* & Set .* & Set .* & SetNormalMode \["auto"\])"_s);
            return m_facts["told whole"_s]().toString().replace(calls, "profile"_s);
        };
        m_facts["refusals"_s] = [this] { return m_stage.refusals(); };
        m_facts["open"_s] = [this] {
            return static_cast<int>(
                std::count_if(m_replies.begin(), m_replies.end(),
                              [](const auto& reply) { return !reply.isFinished(); }));
        };
        m_facts["due"_s] = [this] { return HeldClock::instance().due(backend).size(); };
        m_facts["difference"_s] = [this] { return difference(); };
        m_facts["idle"_s] = [this] {
            return backend->interfaceStatus("wlan0"_s) == Networking_LowLevel::Idle ? 1 : 0;
        };
        m_facts["connected"_s] = [this] {
            const auto wireless = m_fixture->info().wireless();
            const bool is =
                wireless.state() == OrvaNetworkState::Connected && !wireless.addresses().isEmpty();
            return is ? wireless.ssid() : QString();
        };
    }
    /// The difference between the published picture and the daemon's own world.
    QString difference() const
    {
        const OrvaNetworkInfo info = m_fixture->info();
        const QVariantMap wired = m_stage.details("eth0"_s);
        const QVariantMap wireless = m_stage.details("wlan0"_s);
        const auto same = [](const QVariant& world, OrvaNetworkState state) {
            return world.toBool() == (state == OrvaNetworkState::Connected);
        };
        if (wireless.isEmpty())
            return "no daemon"_s;
        if (wired.value("CableStatus"_s) != info.wired().cableConnected())
            return "cable"_s;
        if (!same(wired.value("Connected"_s), info.wired().state()))
            return "wired state"_s;
        if (!same(wireless.value("Connected"_s), info.wireless().state()))
            return "wireless state"_s;
        if (wireless.value("Ssid"_s) != info.wireless().ssid())
            return "SSID"_s;
        if (wireless.value("Mac"_s) != m_fixture->value(OrvaNetworkStateWirelessMAC()).string_())
            return "MAC"_s;
        return same(m_stage.details("uap0"_s).value("SoftApUp"_s), info.softAp().state())
                   ? QString()
                   : "soft AP"_s;
    }

    Stage& m_stage;
};

} // namespace

class DaemonTest : public QObject
{
    Q_OBJECT
    std::unique_ptr<Stage> m_stage;

    void play(const char* table)
    {
        addTableColumns();
        addTableRows(QFINDTESTDATA(table));
    }
    void play()
    {
        QFETCH(QString, section);
        QFETCH(QStringList, cells);
        cells = Player::row(section, cells);
        DaemonPlayer player(*m_stage, cells.first().split("; "_s));
        const QString wrong = player.playRow(cells);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong + "\n"_s + m_stage->told().join("\n"_s)));
    }

private Q_SLOTS:
    void initTestCase()
    {
        HeldClock::run();
        m_stage = std::make_unique<Stage>();
        m_stage->write("world.json"_s,
                       R"({"timeFactor": 0.1, "delays": {"wps": 20000}, "cable": {"plugged": false},
            "networks": {"home": {"subnet": "10.1.0.0/24", "gateway": "10.1.0.1"}},
            "accessPoints": [{"ssid": "Home", "security": "wpa-psk", "key": "secret-Home",
                              "wps": true, "network": "home"}]})");
        QVERIFY(m_stage->start());
    }
    void cleanup() { m_stage->clean(); }
    void cleanupTestCase() { m_stage.reset(); }

    void afterAFaultThePictureIsTheWorld_data() { play("faults.txt"); }
    void afterAFaultThePictureIsTheWorld() { play(); }

    void theDaemonIsTold_data() { play("wire.txt"); }
    void theDaemonIsTold() { play(); }

    void textsAreCut()
    {
        DaemonPlayer player(*m_stage);
        const QString longText(5000, QLatin1Char('x'));
        m_stage->say("AuthError"_s, {"Home"_s, longText});
        const auto message = [&] { return player.fixture().value(OrvaNetworkConnectingMessage()); };
        EVENTUALLY_EQUAL(message().string_(), longText.left(4096));
        m_stage->say("StationConnected"_s, {longText});
        const auto stations = [&] {
            return player.fixture().value(OrvaNetworkConnectedSoftApStationsPath()).stringList();
        };
        EVENTUALLY_EQUAL(stations(), QStringList(longText.left(4096).toUpper()));
    }

    /// A daemon that starts anew takes nothing down that was in between, nor brings up what was
    /// off.
    void endsWhatWasInBetweenByName()
    {
        PlayedListener listener;
        listener.disconnecting = QStringList{"uap1"_s, "eth0"_s, "uap0"_s};
        Networking_LowLevel_LUMO client(listener);
        QVERIFY(!client.getEthernetMAC().isEmpty());
        QTest::qWait(50);
        QVERIFY(client.startSoftAp({}) && client.disconnect());
        listener.heard.clear();
        QSignalSpy refreshed(&client, &Networking_LowLevel::AddressesChanged);
        for (const char* signal : {"Connected", "Disconnected"})
            m_stage->say(QLatin1String(signal), {"uap2"_s});
        m_stage->say("Connected"_s, {"wlan0"_s});
        m_stage->say("Started"_s);
        const QStringList heard = {"uap2 up"_s,   "uap2 down"_s, "wlan0 up"_s,  "eth0 down"_s,
                                   "uap0 down"_s, "uap1 down"_s, "wlan0 down"_s};
        EVENTUALLY_EQUAL(listener.heard.mid(0, 7), heard);
        QCOMPARE(refreshed.size(), 1);
        QVERIFY(client.forceWifiReconnect());
        EVENTUALLY(m_stage->told().contains("ForceWifiReconnect"_s));
        QCOMPARE(m_stage->told().filter("StartSoftAp"_s).size(), 1);
    }

    void aDaemonThatHangsCostsTwoSecondsOnce()
    {
        DaemonPlayer player(*m_stage);
        QCOMPARE(player.playRow({"start"_s, "told profile"_s}), QString());
        QSignalSpy refreshed(player.backend, &Networking_LowLevel::AddressesChanged);
        m_stage->tell("Hang"_s, {8000U});
        QElapsedTimer clock;
        clock.start();
        QVERIFY(player.backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() > 1900 && clock.elapsed() < 6000);
        for (int i = 0; i < 100; ++i)
            QVERIFY(player.backend->getEthernetMAC().isEmpty());
        player.begin("wireless/reconnect"_s);
        QTest::qWait(100);
        QVERIFY(player.backend->getEthernetMAC().isEmpty());
        QVERIFY(clock.elapsed() < 8000);
        EVENTUALLY_EQUAL(refreshed.size(), 1);
        QCOMPARE(player.check("due 0"_s), QString());
        QVERIFY(!player.backend->getEthernetMAC().isEmpty());
        QCOMPARE(player.check("told profile & ForceWifiReconnect"_s), QString());
    }

    void anAnswerThatNeverComesIsGivenUp()
    {
        DaemonPlayer player(*m_stage);
        QTest::qWait(50);
        QSignalSpy refreshed(player.backend, &Networking_LowLevel::AddressesChanged);
        for (int lost = 1; lost <= 2; ++lost) {
            m_stage->tell("Lose"_s, {1U});
            QVERIFY(player.backend->getEthernetMAC().isEmpty());
            HeldClock::instance().pass(27000); // beside the 2 s of the question
            QCOMPARE(refreshed.size(), lost - 1);
            HeldClock::instance().pass(1000);
            EVENTUALLY_EQUAL(refreshed.size(), lost);
            QVERIFY(!player.backend->getEthernetMAC().isEmpty());
        }
    }

    /// An error is an answer or none; after none, everything is asked again.
    void readsErrors_data()
    {
        QTest::addColumn<QString>("error");
        QTest::addColumn<int>("refreshes");
        QTest::newRow("the bus's policy") << "org.freedesktop.DBus.Error.AccessDenied"_s << 1;
        QTest::newRow("the bus's limits") << "org.freedesktop.DBus.Error.LimitsExceeded"_s << 1;
        QTest::newRow("nobody there") << "org.freedesktop.DBus.Error.NameHasNoOwner"_s << 1;
        QTest::newRow("the daemon's own") << "org.orva.lumod.Error"_s << 0;
    }
    void readsErrors()
    {
        QFETCH(QString, error);
        DaemonPlayer player(*m_stage);
        QVERIFY(!player.backend->getEthernetMAC().isEmpty());
        QTest::qWait(50);
        QSignalSpy refreshed(player.backend, &Networking_LowLevel::AddressesChanged);
        m_stage->tell("Refuse"_s, {error});
        QVERIFY(player.backend->getEthernetMAC().isEmpty());
        m_stage->tell("Refuse"_s, {QString()});
        QVERIFY(!player.backend->getEthernetMAC().isEmpty());
        QTest::qWait(50);
        QTEST(int(refreshed.size()), "refreshes");
    }
};

ORVA_HELD_TEST_MAIN(DaemonTest)
#include "tst_daemon.moc"
