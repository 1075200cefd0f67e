// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmabstractworker.h"

void CMChangeHub::notify(const CMPath& path, const OrvaValue& value) const
{
    const auto listeners = m_listeners.values(path);
    for (CMChangeListener* listener : listeners) {
        // A listener may end another one.
        if (m_listeners.contains(path, listener))
            listener->pathChanged(path, value);
    }
}

namespace {

struct Dispatch
{
    CMAbstractWorker& worker;

    void operator()(const CMGetDataRequest& request) const { worker.getDataRequest(request); }
    void operator()(const CMGetRowsRequest& request) const { worker.getRowsRequest(request); }
    void operator()(const CMMatchRowRequest& request) const { worker.matchRowRequest(request); }
    void operator()(const CMSetDataRequest& request) const { worker.setDataRequest(request); }
};

} // namespace

CMAbstractWorker::CMAbstractWorker(QObject* parent)
    : QObject(parent)
{
    connect(this, &CMAbstractWorker::valueChanged, this,
            [this](const CMPath& path, const OrvaValue& value) { m_changes.notify(path, value); });
}

void CMAbstractWorker::request(const CMRequest& request)
{
    std::visit(Dispatch{*this}, request);
}

bool CMAbstractWorker::ping()
{
    return true;
}

void CMAbstractWorker::trace() {}

void CMAbstractWorker::getDataRequest(const CMGetDataRequest& request)
{
    routeOrFail(request);
}

void CMAbstractWorker::getRowsRequest(const CMGetRowsRequest& request)
{
    routeOrFail(request);
}

void CMAbstractWorker::matchRowRequest(const CMMatchRowRequest& request)
{
    routeOrFail(request);
}

void CMAbstractWorker::setDataRequest(const CMSetDataRequest& request)
{
    routeOrFail(request);
}

void CMAbstractWorker::connectChange(const CMPath& path, CMChangeListener* listener)
{
    m_changes.add(path, listener);
}

void CMAbstractWorker::disconnectChange(const CMPath& path, CMChangeListener* listener)
{
    m_changes.remove(path, listener);
}

bool CMAbstractWorker::route(const CMPath&, const CMRequest&)
{
    return false;
}

void CMAbstractWorker::routeOrFail(const CMRequest& request)
{
    const CMPath path = orvaPathOf(request);
    if (!route(path, request))
        orvaFail(request, CMError::unknownPath(path));
}

QVariant CMAbstractWorker::getValue(const CMPath& path)
{
    const CMGetDataRequest read{path, CMReply<QVariant>::create()};
    request(read);
    const QVariant value = read.reply.value();
    return value.isValid() ? value : QVariant(QVariantHash());
}

void CMAbstractWorker::setValue(const CMPath& path, const OrvaHash& value,
                                const CMReply<QVariant>& reply)
{
    request(CMSetDataRequest(path, OrvaRoles::Value(), OrvaValue(value), reply));
}

void CMAbstractWorker::setValue(const CMPath& path, const QVariant& value,
                                const CMReply<QVariant>& reply)
{
    setValue(path, OrvaHash(value.toHash()), reply);
}

void CMAbstractWorker::invoke(const CMPath& path, const OrvaHash& value,
                              const CMReply<QVariant>& reply)
{
    request(CMSetDataRequest(path, OrvaRoles::Activate(), OrvaValue(value), reply));
}

void CMAbstractWorker::invoke(const CMPath& path, const QVariant& value,
                              const CMReply<QVariant>& reply)
{
    invoke(path, OrvaHash(value.toHash()), reply);
}
