// SPDX-License-Identifier: Apache-2.0
#include "callerturns.h"
#include "heldclock.h"
#include "host.h"
#include "privatebus.h"
#include "standins/powermanager.h"
#include "values.h"

#include "power/powerrecords.h"

#include <QtTest>

#include <dbus/dbus.h>

namespace {

CMPath path(const char* text)
{
    return CMPath(QLatin1String(text));
}

/// A worker with one value node.
std::unique_ptr<CMNodesWorker> workerWith(const char* node, const OrvaValue& value)
{
    auto worker = std::make_unique<CMNodesWorker>(QVariantHash(), QString());
    CMValueNode::create(worker->nodes(), path(node))->setValue(value);
    return worker;
}

qint32 valueAt(const char* node)
{
    return OrvaValue(CMRoot()->getValue(path(node)).toHash()).i32_();
}

} // namespace

class TreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        HeldClock::run();
        QVERIFY(m_bus.start());
    }
    void init() { m_root = std::make_unique<RootWorker>(); }
    void cleanup() { m_root.reset(); }

    void aRequestGoesToTheFirstWorkerOfItsPath()
    {
        m_root->addWorker(workerWith("a/one", OrvaValue::of(1)));
        m_root->addWorker(workerWith("a/one/two", OrvaValue::of(2)));
        m_root->addWorker(workerWith("a/one", OrvaValue::of(4)));
        QCOMPARE(m_root->nodeInfos().size(), 2);
        const auto reply = CMReply<QVariant>::create();
        m_root->setValue(path("a/one/two"), OrvaValue::of(3), reply);
        QVERIFY(reply.isFinished() && reply.error().isEmpty());
        QCOMPARE(valueAt("a/one"), 1);
        QCOMPARE(valueAt("a/one/two"), 3);
    }

    void aWorkerThatWentHasNoPaths()
    {
        struct Asker : CMNodesWorker
        {
            explicit Asker(QVariant* answer)
                : CMNodesWorker(QVariantHash(), QString())
                , m_answer(answer)
            {
            }
            ~Asker() override { *m_answer = CMRoot()->getValue(path("later")); }
            QVariant* m_answer;
        };
        QVariant answer = QVariantHash{{"unasked"_s, true}};
        m_root->addWorker(std::make_unique<Asker>(&answer));
        m_root->addWorker(workerWith("later", OrvaValue::of(1)));
        m_root.reset(); // The last goes first.
        QVERIFY(answer.toHash().isEmpty());
    }

    void whoWaitsForANodeIsToldWhenItsWorkerComes()
    {
        auto ended = std::make_unique<CMValueItem>(nullptr, path("late"));
        const CMValueItem item(nullptr, path("late")); // is told first
        QSignalSpy changed(&item, &CMValueItem::changed);
        QSignalSpy endedChanged(ended.get(), &CMValueItem::changed);
        connect(&item, &CMValueItem::changed, this, [&ended] { ended.reset(); });
        m_root->addWorker(workerWith("late", OrvaValue::of(4)));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(endedChanged.size(), 0);
        QCOMPARE(item.value().i32_(), 4);
        // The first value is told once, though another comes before it is.
        const CMValueItem later(nullptr, path("late"));
        QSignalSpy laterChanged(&later, &CMValueItem::changed);
        m_root->setValue(path("late"), OrvaValue::of(5), {});
        QCoreApplication::processEvents();
        QCOMPARE(laterChanged.size(), 1);
    }

    void thePowerManagerKeepsTheLastHundredRequestsInOrder()
    {
        m_root->addWorker(std::make_unique<PowerManager>());
        OrvaPowerManagerResourceRequest wanted;
        wanted.setModuleName("Test"_s);
        wanted.setResource(OrvaPowerManagerResources::Wifi);
        wanted.setAction(OrvaPowerModuleActions::Request);
        auto reply = CMReply<QVariant>::create();
        for (int i = 0; i < 103; ++i)
            m_root->invoke(OrvaPowerManagerResourceRequestPath(), wanted, {});
        wanted.setAction(OrvaPowerModuleActions::None);
        m_root->invoke(OrvaPowerManagerResourceRequestPath(), wanted, reply);
        QTRY_VERIFY(reply.isFinished());
        QVERIFY(OrvaValue(m_root->getValue(path("power/resource/wifi")).toHash()).bool_());
        reply = CMReply<QVariant>::create();
        wanted.setAction(OrvaPowerModuleActions::Release);
        m_root->invoke(OrvaPowerManagerResourceRequestPath(), wanted, reply);
        QTRY_VERIFY(reply.isFinished());
        const CMGetRowsRequest rows{path("power/requests"), CMReply<QVariant>::create()};
        m_root->request(rows);
        const QVariantList list = rows.reply.value().toList();
        QCOMPARE(list.size(), 100);
        QCOMPARE(OrvaRoles(list.first().toHash()).id(), "6"_s);
        QCOMPARE(OrvaHash(OrvaRoles(list.last().toHash()).value()), OrvaHash(wanted));
        QVERIFY(!OrvaValue(m_root->getValue(path("power/resource/wifi")).toHash()).bool_());
    }

    void thePowerManagerServesARegisteredModuleInACrowd()
    {
        m_root->addWorker(std::make_unique<PowerManager>());
        const auto ask = [this](const CMPath& node, const QString& name) {
            OrvaPowerManagerResourceRequest wanted;
            wanted.setModuleName(name);
            if (node == OrvaPowerManagerResourceRequestPath()) {
                wanted.setResource(OrvaPowerManagerResources::Wifi);
                wanted.setAction(OrvaPowerModuleActions::Request);
            }
            const auto reply = CMReply<QVariant>::create();
            m_root->invoke(node, wanted, reply);
            while (!reply.isFinished())
                QCoreApplication::processEvents();
            return reply.error().name();
        };
        const CMPath enter = OrvaPowerManagerModuleRegisterPath();
        const CMPath hold = OrvaPowerManagerResourceRequestPath();
        for (int i = 0; i < 100; ++i) {
            QCOMPARE(ask(enter, QString::number(i)), QString());
            QCOMPARE(ask(hold, "other"_s + QString::number(i)), QString());
        }
        QCOMPARE(ask(enter, "late"_s), "TooMany"_s);
        QCOMPARE(ask(enter, QString(64, QLatin1Char('x'))), "TooMany"_s);
        QCOMPARE(ask(enter, QString(65, QLatin1Char('x'))), "MalformedValue"_s);
        QCOMPARE(ask(hold, "late"_s), "TooMany"_s);
        QCOMPARE(ask(enter, "99"_s), QString());
        QCOMPARE(ask(hold, "99"_s), QString());
    }

    void aTurnLetsTheOthersIn()
    {
        CallerTurns turns;
        QStringList done;
        const auto work = [&] {
            done << "call"_s;
            QThread::msleep(5);
            QMetaObject::invokeMethod(
                this, [&done] { done << "other"_s; }, Qt::QueuedConnection);
        };
        turns.add("a"_s, CallerTurns::Work::AtOnce, work);
        turns.add("b"_s, CallerTurns::Work::AtOnce, work);
        QTRY_COMPARE(done, QStringList({"call"_s, "other"_s, "call"_s, "other"_s}));
    }

    void aHostThatHasHeardLooksWhetherItStillDoes()
    {
        m_root.reset();
        QTemporaryDir state;
        HostConfig config;
        config.stateDirectory = state.path();
        const QDBusConnection connection = m_bus.connection("host"_s);
        Host host(config, connection);
        QSignalSpy failed(&host, &Host::failed);
        QVERIFY(host.start());
        dbus_connection_set_max_received_size(
            static_cast<DBusConnection*>(connection.internalPointer()), 0);
        for (int second = 0; second < 60 && failed.isEmpty(); ++second) {
            HeldClock::instance().pass(1000);
            QTest::qWait(5);
        }
        QCOMPARE(failed.size(), 1);
        QDBusConnection::disconnectFromBus("host"_s);
    }

private:
    PrivateBus m_bus;
    std::unique_ptr<RootWorker> m_root;
};

ORVA_HELD_TEST_MAIN(TreeTest)
#include "tst_tree.moc"
