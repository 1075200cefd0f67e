#pragma once

#include "../cmrequest.h"

#include <QtCore/QObject>

/// Who may use a node. The host's bus policy is what holds; this tells clients.
class ORVA_API OrvaPermission
{
    Q_GADGET
public:
    enum Value : qint32 {
        Default = 0,   ///< Whoever may speak to the host.
        Service = 9999 ///< Meant for the device's own services.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaPermission);
};

/// What a node tells of itself.
struct CMNodeInfo
{
    CMPath path;
    QString kind; ///< "value", "activate" or "rows".
    QString title;
    OrvaPermission permission;
    bool readOnly;
    bool secret;
};

class CMNodes;

/// The base of the node kinds: what any node has. Owned by the container in which it was created;
/// lives on the event loop's thread.
class ORVA_API CMUINode : public QObject
{
    Q_OBJECT
public:
    [[nodiscard]] const CMPath& path() const { return m_path; }
    [[nodiscard]] CMNodeInfo info() const;

    /// What a person reads; empty by default.
    void setTitle(const TrString& title) { m_title = title; }
    void setPermission(OrvaPermission permission) { m_permission = permission; }
    /// A secret node holds keys: only root and the host's own user read or write it over the bus,
    /// and its changes are announced without the value.
    void setSecret(bool secret) { m_secret = secret; }
    [[nodiscard]] bool isSecret() const { return m_secret; }

    /// "value", "activate" or "rows".
    [[nodiscard]] virtual QString kind() const = 0;
    [[nodiscard]] virtual bool isReadOnly() const { return false; }

    // What clients ask. A kind that has no answer refuses with `CMError::wrongKind`.
    virtual void getData(const CMGetDataRequest& request);
    virtual void getRows(const CMGetRowsRequest& request);
    virtual void matchRow(const CMMatchRowRequest& request);
    virtual void setData(const CMSetDataRequest& request);

protected:
    CMUINode(CMNodes& nodes, const CMPath& path);

private:
    CMPath m_path;
    TrString m_title;
    OrvaPermission m_permission;
    bool m_secret = false;
};
