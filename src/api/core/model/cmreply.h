// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"

#include <QPointer>
#include <QVector>

#include <functional>
#include <memory>

class CMCaller;
class QObject;

/// The state that all handles of one reply share. Finishes exactly once: with a value or with an
/// error. Belongs to the thread of the event loop.
class ORVA_API CMReplyData : public std::enable_shared_from_this<CMReplyData>
{
public:
    /// Is given the reply that finished.
    using Callback = std::function<void(const std::shared_ptr<CMReplyData>& reply)>;

    /// A reply that nobody answered yet. When its last handle goes away unanswered, its watchers
    /// are told so with `CMError::dropped()`.
    static std::shared_ptr<CMReplyData> create();

    /// True if the reply has its value or its error.
    [[nodiscard]] bool isFinished() const { return m_finished; }
    /// The value; invalid before the end and after an error.
    [[nodiscard]] const QVariant& value() const { return m_value; }
    /// The error; empty before the end and after a success.
    [[nodiscard]] const CMError& error() const { return m_error; }

    /// The first call counts; a later one is our own mistake, which is logged and otherwise
    /// ignored.
    void finish(const QVariant& value, const CMError& error);

    /// Calls `callback` when the reply finishes, or at once when it has: directly, or from the
    /// event loop of `context` for a queued connection. A context that is gone is not called.
    void addWatcher(QObject* context, const Callback& callback, Qt::ConnectionType type);

    /// Runs the event loop until the reply finishes. It need not run where the answer was put off
    /// and is given at once. False after `timeout` milliseconds without an answer.
    [[nodiscard]] bool waitForFinished(int timeout);

    /// Puts the answer off, so that several pieces of work can be done together: `hurry` is called
    /// when somebody waits for the reply, and may finish it. It is forgotten when the reply
    /// finishes.
    void setHurry(const std::function<void()>& hurry) { m_hurry = hurry; }
    /// Has an answer that was put off given at once, where that is possible.
    void hurry();

    /// Names the client that waits for the reply.
    void setCaller(const std::shared_ptr<CMCaller>& caller) { m_caller = caller; }
    /// The client outside that waits for the reply; null for one of the host's own workers.
    [[nodiscard]] const std::shared_ptr<CMCaller>& caller() const { return m_caller; }

private:
    struct Watcher
    {
        bool hasContext;
        QPointer<QObject> context;
        Callback callback;
        Qt::ConnectionType type;
    };

    CMReplyData() = default;
    static void release(CMReplyData* data);
    void call(const Watcher& watcher);

    bool m_finished = false;
    QVariant m_value;
    CMError m_error;
    QVector<Watcher> m_watchers;
    std::function<void()> m_hurry;
    std::shared_ptr<CMCaller> m_caller;
};

/// A handle to a reply that carries no value. Copies share the reply; a default-constructed handle
/// is empty: a requester that wants no answer.
class ORVA_API CMVoidReply
{
public:
    CMVoidReply() = default;
    /// A fresh reply.
    static CMVoidReply create() { return CMVoidReply(CMReplyData::create()); }

    /// True when the handle is empty.
    bool operator!() const { return !m_data; }
    /// True if somebody wants the answer.
    explicit operator bool() const { return static_cast<bool>(m_data); }

    /// Finishes the reply with an error. Does nothing on an empty handle.
    void setError(const CMError& error) const;
    /// Finishes the reply without error. Does nothing on an empty handle.
    void finish() const;

    /// True if the reply has its value or its error; false for an empty handle.
    [[nodiscard]] bool isFinished() const { return m_data && m_data->isFinished(); }
    /// The error that the reply finished with; empty when there is none.
    [[nodiscard]] CMError error() const { return m_data ? m_data->error() : CMError(); }
    /// The shared state; null for an empty handle.
    [[nodiscard]] CMReplyData* data() const { return m_data.get(); }

    /// Is given a handle to the reply that finished.
    using Callback = std::function<void(const CMVoidReply& reply)>;
    /// Calls `callback` when the reply finishes, with or without error.
    void addWatcher(const Callback& callback, Qt::ConnectionType type = Qt::AutoConnection) const;
    /// The same, for as long as `context` lives.
    void addWatcher(QObject* context, const Callback& callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const;
    /// Calls `callback` when the reply finishes with an error, for as long as `context` lives.
    void onError(QObject* context, const std::function<void(const CMError& error)>& callback,
                 Qt::ConnectionType type = Qt::AutoConnection) const;

protected:
    /// A handle to `data`; an empty one for null.
    explicit CMVoidReply(std::shared_ptr<CMReplyData> data)
        : m_data(std::move(data))
    {
    }

    /// The state that all copies of the handle share; null for an empty one.
    std::shared_ptr<CMReplyData> m_data;
};

/// A handle to a reply that carries a value of type `T` (a record, or `QVariant` for any plain
/// value).
template <class T>
class CMReply : public CMVoidReply
{
public:
    /// An empty handle.
    CMReply() = default;
    /// A fresh reply.
    static CMReply create() { return CMReply(CMReplyData::create()); }

    using CMVoidReply::finish;
    /// Finishes the reply with a value. Does nothing on an empty handle.
    void finish(const T& value) const
    {
        if (m_data)
            m_data->finish(OrvaCodec<T>::encode(value), CMError());
    }
    /// The value; the type's default before the end and after an error.
    [[nodiscard]] T value() const
    {
        return m_data ? OrvaCodec<T>::decode(m_data->value()).value_or(T()) : T();
    }

    /// Is given a handle to the reply that finished.
    using Callback = std::function<void(const CMReply& reply)>;
    /// Calls `callback` when the reply finishes, with or without error.
    void addWatcher(const Callback& callback, Qt::ConnectionType type = Qt::AutoConnection) const
    {
        addWatcher(nullptr, callback, type);
    }
    /// The same, for as long as `context` lives.
    void addWatcher(QObject* context, const Callback& callback,
                    Qt::ConnectionType type = Qt::AutoConnection) const
    {
        if (m_data)
            m_data->addWatcher(
                context, [callback](const auto& data) { callback(CMReply(data)); }, type);
    }

private:
    explicit CMReply(std::shared_ptr<CMReplyData> data)
        : CMVoidReply(std::move(data))
    {
    }
};
