// SPDX-License-Identifier: Apache-2.0
#include "workerhost.h"

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

ValueStore::ValueStore(const NodeValues& values)
    : CMNodesWorker({}, QStringLiteral("store"))
{
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        CMValueNode::create(nodes(), entry.key())->setValue(entry.value());
}

void ValueStore::addAction(const CMPath& path)
{
    connect(CMActivateNode::create(nodes(), path), &CMActivateNode::invoked, this,
            [](const CMSetDataRequest& request) { request.answer(); });
}

void ValueStore::setDataRequest(const CMSetDataRequest& request)
{
    if (full)
        return request.fail(CMError(QStringLiteral("NotStored"), QStringLiteral("full")));
    writes.append({request.path(), request.value()});
    if (mute)
        return m_kept.append(request);
    CMNodesWorker::setDataRequest(request);
}

WorkerHost::WorkerHost(const NodeValues& values)
{
    log4cplus::Logger log = log4cplus::Logger::getRoot();
    if (log.getAllAppenders().empty()) // else each log complains of that on stderr
        log.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    store = &add(std::make_unique<ValueStore>(values));
}

OrvaValue WorkerHost::value(const CMPath& path)
{
    return OrvaValue(root.getValue(path).toHash());
}

QVector<OrvaValue> WorkerHost::writes(const CMPath& path) const
{
    QVector<OrvaValue> values;
    for (const auto& [written, value] : std::as_const(store->writes)) {
        if (written == path)
            values << value;
    }
    return values;
}

CMReply<QVariant> WorkerHost::send(const CMPath& path, const OrvaValue& value)
{
    const auto reply = CMReply<QVariant>::create();
    root.invoke(path, value, reply);
    return reply;
}

QString WorkerHost::outcome(const CMVoidReply& reply)
{
    if (!reply.isFinished())
        return QStringLiteral("no answer");
    const CMError error = reply.error();
    return error.isEmpty() ? QString() : error.name() + QStringLiteral(": ") + error.message();
}
