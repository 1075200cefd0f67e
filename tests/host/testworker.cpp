#include "../support/literals.h"

#include <core/orva.h>

#include <utility>

namespace {

void echo(const CMSetDataRequest& request)
{
    request.answer(request.value());
}

void fail(const CMSetDataRequest& request)
{
    request.fail(CMError("7 odd-words!"_s, TrString("It went wrong.")));
}

void drop(const CMSetDataRequest&) {}

QVector<CMSetDataRequest> heldRequests;

void hold(const CMSetDataRequest& request)
{
    heldRequests << request;
}

void release(const CMSetDataRequest& request)
{
    heldRequests << request;
    const auto requests = std::exchange(heldRequests, {});
    for (const CMSetDataRequest& held : requests)
        held.answer();
}

} // namespace

/// A worker with a node for each way in which a request can end; none when it is told so.
extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    if (config.contains("none"_s))
        return nullptr;
    auto* worker = new CMNodesWorker(config, "Test"_s);
    CMValueNode::create(worker->nodes(), CMPath("test/unset"_s));
    const auto add = [worker](const char* path, void (*action)(const CMSetDataRequest&)) {
        auto* node = CMActivateNode::create(worker->nodes(), CMPath(QLatin1String(path)));
        QObject::connect(node, &CMActivateNode::invoked, action);
    };
    add("test/echo", echo);
    add("test/fail", fail);
    add("test/drop", drop);
    add("test/hold", hold);
    add("test/release", release);
    return worker;
}
