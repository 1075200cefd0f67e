// SPDX-License-Identifier: Apache-2.0
#include "literals.h"

#include "core/orva.h"

#include <QDBusConnection>
#include <QThread>

#include <dbus/dbus.h>

/// A worker with a node for each way in which a request can end; none when it is told so.
extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    if (config.contains("none"_s))
        return nullptr;
    auto* worker = new CMNodesWorker(config, "Test"_s);
    CMValueNode::create(worker->nodes(), CMPath("test/unset"_s));
    CMValueNode::create(worker->nodes(), CMPath("test/typed"_s))->setType("networkState"_s);
    auto* large = CMValueNode::create(worker->nodes(), CMPath("test/large"_s));
    const auto add = [worker](const QString& path, const auto& action) {
        auto* node = CMActivateNode::create(worker->nodes(), CMPath(path));
        QObject::connect(node, &CMActivateNode::invoked, worker, action, Qt::QueuedConnection);
        return node;
    };
    add("test/echo"_s, [](const CMSetDataRequest& request) { request.answer(request.value()); });
    add("test/fail"_s, [](const CMSetDataRequest& request) {
        const QString name = request.value().string_();
        request.fail(CMError(name.isEmpty() ? "7 odd-words!"_s : name, TrString("It went wrong.")));
    });
    add("test/takes"_s, [](const CMSetDataRequest& request) {
        request.answer(request.value());
    })->setAccepts({"bool"_s, "string"_s});
    add("test/block"_s, [](const CMSetDataRequest& request) {
        QThread::msleep(static_cast<unsigned long>(request.value().i32_()));
    });
    // As when more waits than libdbus takes in.
    add("test/deaf"_s, [](const CMSetDataRequest&) {
        const auto bus = QDBusConnection::systemBus();
        dbus_connection_set_max_received_size(static_cast<DBusConnection*>(bus.internalPointer()),
                                              0);
    });
    add("test/grow"_s, [large](const CMSetDataRequest& request) {
        const auto value = OrvaValue::of(QString(request.value().i32_(), QLatin1Char('x')));
        large->setValue(value);
        request.answer(value);
    });
    add("test/drop"_s, [](const CMSetDataRequest&) {});
    return worker;
}
