// SPDX-License-Identifier: Apache-2.0
// The probe against a server in this process; the timers are told by the test when to run out.
#include "online/onlineprobe.h"
#include "online/onlinestate.h"
#include "testtree.h"

#include "network/networkpaths.h"

#include <QProcess>
#include <QTcpServer>
#include <QTemporaryFile>
#include <QUdpSocket>
#include <QtTest>

#include <unistd.h>

namespace {

using Online = OrvaNetworkOnline;

OrvaValue info(int state, const char* gateway)
{
    return json(R"({"networkInfo":{"state":)" + QByteArray::number(state) +
                R"(,"gateways":[{"ip":")" + gateway + R"("}]}})");
}

} // namespace

class TestOnline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_tree = std::make_unique<TestTree>();
        m_online = m_tree->addValue(OrvaNetworkStateOnlinePath());
        m_info = m_tree->addValue(OrvaNetworkInfoPath());
        m_url = m_tree->addValue(OrvaNetworkOnlineProbeSettingsPath());
        m_body = m_tree->addValue(OrvaNetworkOnlineProbeBodySettingsPath());
        m_server = std::make_unique<QTcpServer>();
        QVERIFY(m_server->listen(QHostAddress::Any));
        connect(m_server.get(), &QTcpServer::newConnection, this, &TestOnline::serve);
        m_asked.clear();
        m_state = std::make_unique<OnlineState>(m_tree->nodes(), nullptr);
    }
    void cleanup()
    {
        m_state.reset();
        m_tree.reset();
    }

    void judgesAnAnswer_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* answer, const char* body, const char* expected) {
            QTest::newRow(answer) << QByteArray(answer).replace("\\n", "\r\n")
                                  << QString::fromLatin1(body) << QString::fromLatin1(expected);
        };
        row("HTTP/1.1 204 No Content\\n\\n", "", "online");
        row("HTTP/1.0 204\\n\\n", "x", "online");
        row("HTTP/1.1 200 OK\\n\\nyes \\n", "yes", "online");
        row("HTTP/1.1 200 OK\\n\\nyes!", "yes", "portal");
        row("HTTP/1.1 200 OK\\n\\n", "", "portal");
        row("HTTP/1.1 302 Found\\nLocation: http://login/\\n\\n", "", "portal");
        row("HTTP/1.1 404 Not Found\\n\\nyes", "yes", "portal");
        row("HTTP/1.1 2040 X\\n\\n", "", "unknown");
        row("SSH-2.0-x\\n", "", "unknown");
        row("HTTP/1.1", "", "unknown");
        row("", "", "unknown");
    }
    void judgesAnAnswer()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QString, body);
        m_answer = answer;
        m_body->setValue(OrvaValue::of(body));
        connectAndProbe("/a%20b?c=d");
        QTRY_VERIFY(timer()->isActive());
        QTEST(Online::toString(m_online->value().networkOnline()), "expected");
        const bool isOnline = m_online->value().networkOnline() == Online::Online;
        QCOMPARE(timer()->interval(), isOnline ? 300000 : 30000);
        QVERIFY(m_asked.startsWith("GET /a%20b?c=d HTTP/1.0\r\nHost: 127.0.0.1:"));
        QTRY_COMPARE(sockets(), 0);
    }

    void asksNobodyByItself()
    {
        for (const char* url : {"", "https://127.0.0.1/", "http://", "ftp://x/", "127.0.0.1"}) {
            m_url->setValue(OrvaValue::of(QString::fromLatin1(url)));
            m_info->setValue(info(1, url[0] ? "10.0.0.1" : "10.0.0.2"));
            QTest::qWait(1);
            QVERIFY2(!timer()->isActive() && sockets() == 0, url);
        }
        QVERIFY(isNow(Online::Unknown));
        m_state->noteEcho(true);
        QVERIFY(isNow(Online::Gateway));
        m_state->noteEcho(false);
        QVERIFY(isNow(Online::NoGateway));
        m_info->setValue(info(1, "10.0.0.3"));
        QVERIFY(isNow(Online::Unknown));
        m_info->setValue(info(1, ""));
        QVERIFY(isNow(Online::NoGateway));
    }

    void goesOnAndEndsWithTheNetwork()
    {
        m_answer = "HTTP/1.1 302 Found\r\n\r\n";
        connectAndProbe("");
        QTRY_VERIFY(isNow(Online::Portal));
        m_state->noteEcho(false);
        QVERIFY(isNow(Online::Portal)); // which does answer
        m_answer = "HTTP/1.1 204 No Content\r\n\r\n";
        timer()->start(0);
        QTRY_VERIFY(isNow(Online::Online));
        m_info->setValue(info(0, "10.0.0.1"));
        QVERIFY(isNow(Online::NoGateway) && !timer()->isActive() && sockets() == 0);
        m_info->setValue(info(1, "10.0.0.1"));
        QTRY_VERIFY(isNow(Online::Online));
        m_url->setValue(OrvaValue::of(QString()));
        QTRY_VERIFY(isNow(Online::Unknown) && !timer()->isActive());
    }

    void endsWithAServerThatIsMuteOrNeverEnds()
    {
        m_body->setValue(OrvaValue::of("yes"_s));
        for (const bool isMute : {true, false}) {
            m_answer = isMute ? QByteArray() : QByteArray(1 << 20, 'x');
            m_stays = true;
            connectAndProbe(isMute ? "/mute" : "/long");
            QTRY_VERIFY(sockets() == 1 || !isMute);
            if (isMute)
                deadline()->start(0);
            QTRY_COMPARE(sockets(), 0);
            QVERIFY(isNow(Online::Unknown) && timer()->isActive());
        }
        for (const char* slow : {"HTTP/1.1 200 OK\r\nX: ", "HTTP/1.1 200 OK\r\n\r\n y"}) {
            m_answer = slow;
            m_asked.clear();
            connectAndProbe(slow[17] == 'X' ? "/head" : "/body");
            QTRY_VERIFY(!m_asked.isEmpty());
            QTest::qWait(10);
            deadline()->start(0);
            QTRY_VERIFY(timer()->isActive());
            QVERIFY2(isNow(Online::Unknown), slow);
        }
        m_stays = false;
        m_server->close();
        connectAndProbe("/refused");
        QTRY_VERIFY(timer()->isActive());
        QVERIFY(isNow(Online::Unknown));
    }

    void asksByNameAndTriesEachAddress()
    {
        m_answer = "HTTP/1.1 204 No Content\r\n\r\n";
        m_info->setValue(info(1, "10.0.0.1"));
        m_url->setValue(OrvaValue::of("http://localhost:%1"_s.arg(port())));
        QTRY_VERIFY(isNow(Online::Online));
        QVERIFY(m_asked.contains("\r\nHost: localhost:"));
        if (QTcpServer().listen(QHostAddress::LocalHostIPv6)) {
            m_url->setValue(OrvaValue::of("http://[::1]:%1"_s.arg(port())));
            QTRY_VERIFY(isNow(Online::Online) && m_asked.contains("\r\nHost: [::1]:"));
        }
        m_url->setValue(OrvaValue::of("http://nobody.invalid"_s));
        QTRY_VERIFY_WITH_TIMEOUT(timer()->isActive(), 10000);
        QVERIFY(isNow(Online::Unknown));
    }

    void aSilentNameServerPutsNoEndOff()
    {
        QTemporaryFile servers;
        QVERIFY(servers.open() && servers.write("nameserver 127.0.0.1\n") > 0 && servers.flush());
        const auto silent =
            "ip link set lo up && mount --bind %1 /etc/resolv.conf && exec %2 ends"_s;
        const auto command =
            silent.arg(servers.fileName(), QCoreApplication::applicationFilePath());
        QElapsedTimer time;
        time.start();
        const int status =
            QProcess::execute("unshare"_s, {"-m"_s, "-n"_s, "sh"_s, "-c"_s, command});
        if (::geteuid() != 0)
            QSKIP("only root has namespaces");
        QCOMPARE(status, 0);
        QVERIFY2(time.elapsed() < 3000, qPrintable(QString::number(time.elapsed())));
    }

private:
    void connectAndProbe(const char* path)
    {
        m_info->setValue(info(1, "10.0.0.1"));
        const QString url = "http://127.0.0.1:%1%2"_s;
        m_url->setValue(OrvaValue::of(url.arg(port()).arg(QLatin1String(path))));
        QTest::qWait(1); // for the item that follows it
    }
    quint16 port()
    {
        if (m_server->isListening())
            m_port = m_server->serverPort();
        return m_port;
    }
    void serve()
    {
        QTcpSocket* const client = m_server->nextPendingConnection();
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        connect(client, &QTcpSocket::readyRead, this, [this, client] {
            m_asked = client->readAll();
            client->write(m_answer);
            if (!m_stays)
                client->disconnectFromHost();
        });
    }
    [[nodiscard]] bool isNow(Online::Value value) const
    {
        return m_online->value().networkOnline() == value;
    }
    [[nodiscard]] static QTimer* timerOf(const QObject* owner)
    {
        return owner->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    }
    [[nodiscard]] QTimer* timer() const { return timerOf(m_state.get()); }
    [[nodiscard]] QTimer* deadline() const { return timerOf(m_state->findChild<OnlineProbe*>()); }
    [[nodiscard]] int sockets() const { return m_state->findChildren<QTcpSocket*>().size(); }

    std::unique_ptr<TestTree> m_tree;
    std::unique_ptr<QTcpServer> m_server;
    std::unique_ptr<OnlineState> m_state;
    CMValueNode* m_online = nullptr;
    CMValueNode* m_info = nullptr;
    CMValueNode* m_url = nullptr;
    CMValueNode* m_body = nullptr;
    QByteArray m_answer;
    QByteArray m_asked;
    quint16 m_port = 0;
    bool m_stays = false;
};

/// Asks a name server that is silent, and ends; 0 where nothing was answered until then.
int askAndEnd(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QUdpSocket silent;
    if (!silent.bind(QHostAddress::LocalHost, 53))
        return 2;
    OnlineProbe probe(QUrl("http://silent.example"_s), QString(), nullptr);
    bool answered = false;
    QObject::connect(&probe, &OnlineProbe::finished, [&answered] { answered = true; });
    QTest::qWait(200);
    return answered || !silent.hasPendingDatagrams() ? 1 : 0;
}

int main(int argc, char** argv)
{
    if (argc == 2 && qstrcmp(argv[1], "ends") == 0)
        return askAndEnd(argc, argv);
    const QCoreApplication application(argc, argv);
    TestOnline test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_online.moc"
