#pragma once

#include "cmrequest.h"
#include "nodes/cmuinode.h"

#include <QtCore/QObject>

/// Is told of the changes of the paths that it watches.
class ORVA_API CMChangeListener
{
public:
    virtual ~CMChangeListener() = default;
    virtual void pathChanged(const CMPath& path, const OrvaValue& value) = 0;
};

/// Who watches which path.
class ORVA_API CMChangeHub
{
public:
    void add(const CMPath& path, CMChangeListener* listener) { m_listeners.insert(path, listener); }
    void remove(const CMPath& path, CMChangeListener* listener)
    {
        m_listeners.remove(path, listener);
    }
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
    explicit CMAbstractWorker(QObject* parent = nullptr)
        : QObject(parent)
    {
    }

    /// The host's entry for requests: hands each to the operation of its kind.
    virtual void request(const CMRequest& request);
    /// Whether the worker is alive and answers.
    virtual bool ping();
    /// Writes what the worker holds to the log, at debug level.
    virtual void trace();
    virtual void getDataRequest(const CMGetDataRequest& request) = 0;
    virtual void getRowsRequest(const CMGetRowsRequest& request) = 0;
    virtual void matchRowRequest(const CMMatchRowRequest& request) = 0;
    virtual void setDataRequest(const CMSetDataRequest& request) = 0;
    /// Watches a path, whether or not there is a node yet. The listener must disconnect before it
    /// dies.
    virtual void connectChange(const CMPath& path, CMChangeListener* listener) = 0;
    virtual void disconnectChange(const CMPath& path, CMChangeListener* listener) = 0;

    /// What the worker's nodes tell of themselves, in the order of their creation.
    [[nodiscard]] virtual QVector<CMNodeInfo> nodeInfos() const = 0;
    /// Whether there is a secret node at `path`.
    [[nodiscard]] virtual bool isSecret(const CMPath& path) const = 0;

    /// The value of a node, at once: a variant that holds a hash, to be wrapped into an
    /// `OrvaValue`; an empty hash where there is no such node or no value.
    [[nodiscard]] QVariant getValue(const CMPath& path);

    /// Writes a node. The reply (which may be empty) tells how it went.
    void setValue(const CMPath& path, const OrvaHash& value, const CMReply<QVariant>& reply);
    void setValue(const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply);

    /// Activates a node. The reply (which may be empty) is answered when the request is, however
    /// long that takes.
    void invoke(const CMPath& path, const OrvaHash& value, const CMReply<QVariant>& reply);
    void invoke(const CMPath& path, const QVariant& value, const CMReply<QVariant>& reply);

Q_SIGNALS:
    void valueChanged(const CMPath& path, const OrvaValue& value);
    void rowsChanged(const CMPath& path);
    void nodeAdded(const CMPath& path);
};
