// SPDX-License-Identifier: Apache-2.0
#include "values.h"

#include "core/orva.h"

#include <QtTest>

namespace {

CMPath path()
{
    return CMPath("a"_s);
}

class Receiver : public QObject
{
public:
    void on_request(const CMSetDataRequest& request) { requests << request; }
    QVector<CMSetDataRequest> requests;
};

} // namespace

Q_DECLARE_METATYPE(std::function<void(CMReply<QVariant>&)>)

class RepliesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplyFinishesOnce()
    {
        const auto reply = CMReply<QVariant>::create();
        int calls = 0;
        reply.addWatcher([&calls](const CMReply<QVariant>& end) { calls += end.value().toInt(); });
        reply.onError(this, [&calls](const CMError&) { calls += 10; });
        reply.finish(1);
        reply.setError(CMError("error"_s, TrString("no")));
        QCOMPARE(calls, 1);
        QVERIFY(reply.error().isEmpty());
    }

    void aWatcherWhoseContextIsGoneIsNotCalled()
    {
        const auto reply = CMVoidReply::create();
        int calls = 0;
        for (const auto type : {Qt::DirectConnection, Qt::QueuedConnection}) {
            QObject context;
            reply.addWatcher(
                &context, [&calls](const CMVoidReply&) { ++calls; }, type);
        }
        reply.addWatcher(
            this, [&calls](const CMVoidReply&) { calls += 10; }, Qt::QueuedConnection);
        reply.finish();
        QCOMPARE(calls, 0);
        QTRY_COMPARE(calls, 10);
    }

    void aRequestAnswersAsAReplyEnds_data()
    {
        QTest::addColumn<std::function<void(CMReply<QVariant>&)>>("end");
        QTest::addColumn<QString>("error");
        using End = std::function<void(CMReply<QVariant>&)>;
        QTest::newRow("well") << End([](auto& reply) { reply.finish(1); }) << QString();
        QTest::newRow("with an error")
            << End([](auto& reply) { reply.setError(CMError::failed("no"_s)); }) << "error"_s;
        QTest::newRow("dropped") << End([](auto& reply) { reply = {}; }) << "Dropped"_s;
    }

    void aRequestAnswersAsAReplyEnds()
    {
        QFETCH(std::function<void(CMReply<QVariant>&)>, end);
        QFETCH(QString, error);
        auto relayed = CMReply<QVariant>::create();
        const CMSetDataRequest request(path(), OrvaRoles::Activate(), {},
                                       CMReply<QVariant>::create());
        request.answerAs(relayed);
        QVERIFY(!request.reply().isFinished());
        end(relayed);
        QVERIFY(request.reply().isFinished());
        QCOMPARE(request.reply().error().name(), error);
        QVERIFY(request.reply().value().toHash().isEmpty());
    }

    void aWaitHasALimit()
    {
        const auto reply = CMVoidReply::create();
        QVERIFY(!reply.data()->waitForFinished(1));
        QTimer::singleShot(0, this, [reply] { reply.finish(); });
        QVERIFY(reply.data()->waitForFinished(5000));
    }

    void whoWaitsHurriesWhatIsNotFinishedYet()
    {
        int hurries = 0;
        for (const bool isFinished : {true, false}) {
            const auto reply = CMVoidReply::create();
            reply.data()->setHurry([&] {
                ++hurries;
                reply.finish();
            });
            if (isFinished)
                reply.finish();
            QVERIFY(reply.data()->waitForFinished(0));
        }
        QCOMPARE(hurries, 1);
    }

    void aValueNodeAnnouncesItsFirstValueAndChanges()
    {
        CMNodes nodes;
        auto* node = CMValueNode::create(nodes, path());
        QSignalSpy changed(node, &CMValueNode::valueChanged);
        node->setValue(OrvaValue());
        QCOMPARE(changed.size(), 1);
        node->setValue(OrvaValue::of(1));
        node->setValue(OrvaValue::of(1));
        QCOMPARE(changed.size(), 2);
    }

    void anActivationIsDeliveredFromTheEventLoopOrDropped()
    {
        CMNodes nodes;
        auto* node = CMActivateNode::create(nodes, path());
        auto receiver = std::make_unique<Receiver>();
        node->setInvoke(receiver.get(), &Receiver::on_request, Qt::QueuedConnection);
        node->setData(CMSetDataRequest(path(), OrvaRoles::Activate(), OrvaValue::of(1)));
        QVERIFY(receiver->requests.isEmpty());
        QTRY_COMPARE(receiver->requests.size(), 1);
        auto reply = CMReply<QVariant>::create();
        QString name;
        reply.onError(this, [&name](const CMError& error) { name = error.name(); });
        node->setData(CMSetDataRequest(path(), OrvaRoles::Activate(), OrvaValue(), reply));
        reply = {};
        receiver.reset();
        QTRY_COMPARE(name, "Dropped"_s);
    }

    void rowsKeepTheirPlacesAndTellOnce()
    {
        CMNodes nodes;
        auto* node = CMListRowsNode::create(nodes, path());
        QSignalSpy changed(node, &CMListRowsNode::rowsChanged);
        node->rowsClear();
        QCoreApplication::processEvents();
        QCOMPARE(changed.size(), 0);
        for (const char* id : {"a", "b", "c", "a"}) {
            OrvaRoles row;
            row.setId(QLatin1String(id));
            row.setTitle(QString::number(node->rows().size()));
            node->rowsSetById(row);
        }
        node->rowsRemoveById("b"_s);
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(node->rows().size(), 2);
        QCOMPARE(node->rows().first().title().toString(), "3"_s);
        QCOMPARE(node->rows().last().id(), "c"_s);
    }
};

QTEST_GUILESS_MAIN(RepliesTest)
#include "tst_replies.moc"
