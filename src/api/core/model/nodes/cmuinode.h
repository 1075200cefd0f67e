// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmnoderow.h"
#include "core/model/cmrequest.h"

#include <QObject>

/// The description of a node.
struct CMNodeInfo
{
    CMPath path;               ///< Its place in the tree.
    QString kind;              ///< "value", "activate" or "rows".
    QString title;             ///< The text that a person reads; often empty.
    OrvaPermission permission; ///< The people it is meant for.
    bool readOnly;             ///< True if clients may only read it.
    bool secret;               ///< True if it holds keys; see `CMUINode::setSecret`.
    /// The type key of the value that it holds, that each of its rows holds, or that it takes when
    /// it is activated: several with "|" between them, empty where nothing is said.
    QString type;
};

class CMNodes;

/// The base of the node kinds: what any node has. Owned by the container in which it was created;
/// lives on the event loop's thread.
class ORVA_API CMUINode : public QObject
{
    Q_OBJECT
public:
    /// The node's place in the host's tree.
    [[nodiscard]] const CMPath& path() const { return m_path; }
    /// The node's description as it is now.
    [[nodiscard]] CMNodeInfo info() const;

    /// Sets the text that a person reads, which is empty by default.
    void setTitle(const TrString& title) { m_title = title; }
    /// Sets the people that the node is meant for; `OrvaPermission::Default` where nothing is said.
    void setPermission(OrvaPermission permission) { m_permission = permission; }
    /// A secret node holds keys: only root and the host's own user read or write it over the bus,
    /// and its changes are announced without the value.
    void setSecret(bool secret) { m_secret = secret; }
    /// The type of what the node holds or takes, as `CMNodeInfo::type` has it. A client's value of
    /// another type is refused.
    void setType(const QString& type) { m_type = type; }
    /// True if the node holds keys.
    [[nodiscard]] bool isSecret() const { return m_secret; }

    /// "value", "activate" or "rows".
    [[nodiscard]] virtual QString kind() const = 0;
    /// The type keys that `setType` was given.
    [[nodiscard]] virtual QString type() const { return m_type; }
    /// True if clients may only read the node.
    [[nodiscard]] virtual bool isReadOnly() const { return false; }

    /// Hands a client's request to the operation of its kind, of those below.
    void request(const CMRequest& request);
    /// A client asks for the value. A kind without one refuses with `CMError::wrongKind`.
    virtual void getData(const CMGetDataRequest& request);
    /// A client asks for the rows; refused likewise.
    virtual void getRows(const CMGetRowsRequest& request);
    /// A client asks for one row; refused likewise.
    virtual void matchRow(const CMMatchRowRequest& request);
    /// A client writes or activates; refused likewise.
    virtual void setData(const CMSetDataRequest& request);

protected:
    /// For the node kinds, whose `create` hands the node to `nodes`.
    CMUINode(CMNodes& nodes, const CMPath& path);

    /// Takes over what the row says of the node: type, permission and title.
    void describe(const CMNodeRow& row);
    /// Refuses the request and gives true if its value is of no type that the node takes.
    [[nodiscard]] bool refusesType(const CMSetDataRequest& request) const;

private:
    CMPath m_path;
    TrString m_title;
    OrvaPermission m_permission;
    QString m_type;
    bool m_secret = false;
};
