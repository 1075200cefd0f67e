#include <core/orva.h>

/// A worker with a node for each way in which a request can end.
class TestWorker : public CMNodesWorker
{
public:
    explicit TestWorker(const QVariantHash& config)
        : CMNodesWorker(config, QStringLiteral("Test"))
        , m_held(CMValueNode::create(nodes(), CMPath(QStringLiteral("test/held"))))
    {
        CMValueNode::create(nodes(), CMPath(QStringLiteral("test/unset")));
        CMListRowsNode::create(nodes(), CMPath(QStringLiteral("test/rows")));
        add("test/echo", &TestWorker::on_echo);
        add("test/fail", &TestWorker::on_fail);
        add("test/drop", &TestWorker::on_drop);
        add("test/hold", &TestWorker::on_hold);
        add("test/release", &TestWorker::on_release);
    }

private:
    void add(const char* path, void (TestWorker::*slot)(const CMSetDataRequest&))
    {
        CMActivateNode::create(nodes(), CMPath(QLatin1String(path)))
            ->setInvoke(this, slot, Qt::QueuedConnection);
    }
    void on_echo(const CMSetDataRequest& request) { request.answer(request.value()); }
    void on_fail(const CMSetDataRequest& request)
    {
        request.fail(CMError(QStringLiteral("7 odd-words!"), TrString("It went wrong.")));
    }
    void on_drop(const CMSetDataRequest&) {}
    void on_hold(const CMSetDataRequest& request)
    {
        m_requests << request;
        showHeld();
    }
    void on_release(const CMSetDataRequest& request)
    {
        const auto requests = std::exchange(m_requests, {});
        for (const CMSetDataRequest& held : requests)
            held.answer();
        showHeld();
        request.answer();
    }
    void showHeld()
    {
        OrvaValue value;
        value.setI32_(m_requests.size());
        m_held->setValue(value);
    }

    CMValueNode* m_held;
    QVector<CMSetDataRequest> m_requests;
};

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    return config.contains(QStringLiteral("none")) ? nullptr : new TestWorker(config);
}
