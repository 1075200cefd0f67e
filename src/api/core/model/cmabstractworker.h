// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmrequest.h"
#include "core/model/nodes/cmuinode.h"

#include <QObject>

/// Is told of the changes of the paths that it watches.
class ORVA_API CMChangeListener
{
public:
    virtual ~CMChangeListener() = default;
    /// The value at `path` changed, or is there for the first time. The call comes directly from
    /// the code that changed it and must not block.
    virtual void pathChanged(const CMPath& path, const OrvaValue& value) = 0;
};

/// The listeners of each path.
class ORVA_API CMChangeHub
{
public:
    /// Adds a listener, which is told of each change at `path`. It stays its owner's, and the owner
    /// removes it before it dies.
    void add(const CMPath& path, CMChangeListener* listener) { m_listeners.insert(path, listener); }
    /// Ends what `add` began; does nothing where there is none.
    void remove(const CMPath& path, CMChangeListener* listener)
    {
        m_listeners.remove(path, listener);
    }
    /// Tells the listeners of `path`. A listener may add and remove listeners meanwhile.
    void notify(const CMPath& path, const OrvaValue& value) const;

private:
    QMultiHash<CMPath, CMChangeListener*> m_listeners;
};

/// Answers requests for the paths of a part of the node tree. Everything runs on the event loop's
/// thread.
class ORVA_API CMAbstractWorker : public QObject
{
    Q_OBJECT
public:
    /// The host owns the worker; `parent` is for workers that are part of another object.
    explicit CMAbstractWorker(QObject* parent = nullptr);

    /// The host's entry for requests: hands each to the operation of its kind.
    virtual void request(const CMRequest& request);
    /// True if the worker is alive and answers.
    virtual bool ping();
    /// Writes what the worker holds to the log, at debug level.
    virtual void trace();
    /// Answers with the value of a node; with `CMError::unknownPath` where there is none. This and
    /// the next three do what `route` does.
    virtual void getDataRequest(const CMGetDataRequest& request);
    /// Answers with the rows of a list node.
    virtual void getRowsRequest(const CMGetRowsRequest& request);
    /// Answers with one row of a list node.
    virtual void matchRowRequest(const CMMatchRowRequest& request);
    /// Writes or activates a node, as the request's role says; answers when that is done.
    virtual void setDataRequest(const CMSetDataRequest& request);
    /// Watches a path, whether or not there is a node yet. The listener must disconnect before it
    /// dies.
    virtual void connectChange(const CMPath& path, CMChangeListener* listener);
    /// Ends what `connectChange` began.
    virtual void disconnectChange(const CMPath& path, CMChangeListener* listener);

    /// The descriptions of the worker's nodes, in the order of their creation.
    [[nodiscard]] virtual QVector<CMNodeInfo> nodeInfos() const = 0;
    /// True if there is a secret node at `path`.
    [[nodiscard]] virtual bool isSecret(const CMPath& path) const = 0;

    /// The value of a node, at once: a variant that holds a hash, to be wrapped into an
    /// `OrvaValue`; an empty hash where there is no such node or no value.
    [[nodiscard]] QVariant getValue(const CMPath& path);

    /// Writes a node. The reply (which may be empty) tells how it went.
    void setValue(const CMPath& path, const OrvaHash& value, const CMReply<QVariant>& reply);
    /// The same for a variant that holds a hash; any other counts as an empty one.
    void setValue(const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply);

    /// Activates a node. The reply (which may be empty) is answered when the request is, however
    /// long that takes.
    void invoke(const CMPath& path, const OrvaHash& value, const CMReply<QVariant>& reply);
    /// The same for a variant that holds a hash; any other counts as an empty one.
    void invoke(const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply);

Q_SIGNALS:
    /// A value node changed, or has its first value.
    void valueChanged(const CMPath& path, const OrvaValue& value);
    /// The rows of a list node changed.
    void rowsChanged(const CMPath& path);
    /// There is a node at `path` from now on.
    void nodeAdded(const CMPath& path);

protected:
    /// Hands a request of any kind to the owner of the node at its path. False where there is no
    /// such node, as in a worker that does not override it.
    virtual bool route(const CMPath& path, const CMRequest& request);

private:
    void routeOrFail(const CMRequest& request);

    CMChangeHub m_changes;
};
