// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmreply.h"

#include "core/dbglog.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace {
ORVA_LOGGER(replyLogger, "CMReply")
} // namespace

std::shared_ptr<CMReplyData> CMReplyData::create()
{
    return {new CMReplyData, &CMReplyData::release};
}

void CMReplyData::release(CMReplyData* data)
{
    if (!data->m_finished && !data->m_watchers.isEmpty()) {
        // The watchers get a new handle, since the one that goes away cannot be shared any more.
        const auto last = create();
        last->m_watchers = std::move(data->m_watchers);
        last->finish(QVariant(), CMError::dropped());
    }
    delete data;
}

void CMReplyData::finish(const QVariant& value, const CMError& error)
{
    if (m_finished) {
        LOG4CPLUS_ERROR(replyLogger(),
                        "A reply was finished twice, the second end is ignored: " << error);
        return;
    }
    m_finished = true;
    m_hurry = nullptr;
    m_value = value;
    m_error = error;
    const auto watchers = std::move(m_watchers);
    m_watchers.clear();
    for (const Watcher& watcher : watchers)
        call(watcher);
}

void CMReplyData::addWatcher(QObject* context, const Callback& callback, Qt::ConnectionType type)
{
    const Watcher watcher{context != nullptr, context, callback, type};
    if (m_finished)
        call(watcher);
    else
        m_watchers.append(watcher);
}

void CMReplyData::call(const Watcher& watcher)
{
    if (watcher.hasContext && !watcher.context)
        return;
    const auto self = shared_from_this();
    if (watcher.type != Qt::QueuedConnection) {
        watcher.callback(self);
        return;
    }
    QObject* receiver = watcher.hasContext ? watcher.context.data() : QCoreApplication::instance();
    QMetaObject::invokeMethod(
        receiver, [self, callback = watcher.callback] { callback(self); }, Qt::QueuedConnection);
}

void CMReplyData::hurry()
{
    if (const auto hurry = std::exchange(m_hurry, nullptr))
        hurry();
}

bool CMReplyData::waitForFinished(int timeout)
{
    hurry();
    if (m_finished)
        return true;
    QEventLoop loop;
    QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
    addWatcher(
        &loop, [&loop](const auto&) { loop.quit(); }, Qt::DirectConnection);
    loop.exec();
    return m_finished;
}

void CMVoidReply::setError(const CMError& error) const
{
    if (m_data)
        m_data->finish(QVariant(), error);
}

void CMVoidReply::finish() const
{
    if (m_data)
        m_data->finish(QVariant(), CMError());
}

void CMVoidReply::addWatcher(const Callback& callback, Qt::ConnectionType type) const
{
    addWatcher(nullptr, callback, type);
}

void CMVoidReply::addWatcher(QObject* context, const Callback& callback,
                             Qt::ConnectionType type) const
{
    if (m_data)
        m_data->addWatcher(
            context, [callback](const auto& data) { callback(CMVoidReply(data)); }, type);
}

void CMVoidReply::onError(QObject* context, const std::function<void(const CMError&)>& callback,
                          Qt::ConnectionType type) const
{
    addWatcher(
        context,
        [callback](const CMVoidReply& reply) {
            if (!reply.error().isEmpty())
                callback(reply.error());
        },
        type);
}
