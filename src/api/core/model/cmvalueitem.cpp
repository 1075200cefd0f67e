// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmvalueitem.h"

#include "core/dbglog.h"
#include "core/orva.h"

namespace {
ORVA_LOGGER(initWatcherLogger, "CMInitWatcher")
} // namespace

CMValueItem::CMValueItem(QObject* parent, const CMPath& path)
    : QObject(parent)
    , m_path(path)
{
    m_value = OrvaValue(CMRoot()->getValue(path).toHash());
    CMRoot()->connectChange(path, this);
    if (m_value.isEmpty())
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_known)
                return;
            m_known = true;
            Q_EMIT changed(OrvaValue(), m_value);
        },
        Qt::QueuedConnection);
}

CMValueItem::~CMValueItem()
{
    if (CMAbstractWorker* root = CMRoot())
        root->disconnectChange(m_path, this);
}

void CMValueItem::pathChanged(const CMPath&, const OrvaValue& value)
{
    if (m_known && value == m_value)
        return;
    const OrvaValue old = m_known ? m_value : OrvaValue();
    m_known = true;
    m_value = value;
    Q_EMIT changed(old, value);
}

CMInitWatcher::CMInitWatcher(QObject* parent, const QString& name)
    : QObject(parent)
    , m_name(name)
{
}

CMValueItem* CMInitWatcher::newCMValueItem(const CMPath& path,
                                           const std::function<void(CMValueItem*)>& callback)
{
    auto* item = new CMValueItem(this, path);
    m_missing.append(item);
    connect(item, &CMValueItem::changed, this,
            [this, item, callback] { itemKnown(item, callback); });
    return item;
}

void CMInitWatcher::done()
{
    m_done = true;
    for (const CMValueItem* item : std::as_const(m_missing)) {
        if (item->value().isEmpty())
            LOG4CPLUS_DEBUG(initWatcherLogger(), m_name << " waits for " << item->path());
    }
    QMetaObject::invokeMethod(this, &CMInitWatcher::checkComplete, Qt::QueuedConnection);
}

void CMInitWatcher::itemKnown(CMValueItem* item, const std::function<void(CMValueItem*)>& callback)
{
    if (!m_missing.removeOne(item))
        return;
    if (callback)
        callback(item);
    checkComplete();
}

void CMInitWatcher::checkComplete()
{
    if (!m_done || m_complete || !m_missing.isEmpty())
        return;
    m_complete = true;
    Q_EMIT initDone();
}
