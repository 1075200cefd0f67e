// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmcaller.h"
#include "core/model/cmreply.h"
#include "core/orvaroles.h"

#include <variant>

/// Asks for the value of a node.
struct CMGetDataRequest
{
    /// The node that is asked.
    CMPath path;
    /// Answered with the value's hash; with an empty one where the node has no value yet.
    CMReply<QVariant> reply;
};

/// Asks for all rows of a list-rows node.
struct CMGetRowsRequest
{
    /// The node that is asked.
    CMPath path;
    /// Answered with a list of `OrvaRoles` hashes.
    CMReply<QVariant> reply;
};

/// Asks for one row of a list-rows node.
struct CMMatchRowRequest
{
    /// The node that is asked.
    CMPath path;
    /// The row's id.
    QString id;
    /// Answered with the row's hash; with an empty one where no row has the id.
    CMReply<QVariant> reply;
};

/// Writes a value node or activates an activate node. A value type; copies share the reply.
class ORVA_API CMSetDataRequest
{
public:
    CMSetDataRequest() = default;
    /// `role` is `OrvaRoles::Value()` to write and `OrvaRoles::Activate()` to activate.
    CMSetDataRequest(const CMPath& path, const QString& role, const OrvaValue& value,
                     const CMReply<QVariant>& reply = CMReply<QVariant>());

    /// The node that is written or activated.
    [[nodiscard]] const CMPath& path() const { return m_path; }
    /// `OrvaRoles::Value()` or `OrvaRoles::Activate()`.
    [[nodiscard]] const QString& role() const { return m_role; }
    /// The value that is written or goes with the activation. It may be empty, or of a type that
    /// the node does not expect.
    [[nodiscard]] const OrvaValue& value() const { return m_value; }
    /// The reply that takes the answer; empty when the requester wants none.
    [[nodiscard]] const CMReply<QVariant>& reply() const { return m_reply; }

    /// The client outside that made the request; null where a worker of the host did.
    [[nodiscard]] std::shared_ptr<CMCaller> caller() const;

    /// Answers with success, if anybody wants an answer.
    void answer(const OrvaValue& value = OrvaValue()) const;
    /// Answers with an error, if anybody wants an answer.
    void fail(const CMError& error) const;
    /// Answers when `reply` finishes: with its error or with success, without its value.
    void answerAs(const CMVoidReply& reply) const;

private:
    CMPath m_path;
    QString m_role;
    OrvaValue m_value;
    CMReply<QVariant> m_reply;
};

Q_DECLARE_METATYPE(CMSetDataRequest)

/// Shows the request's path, role and value, with secrets masked.
ORVA_API std::ostream& operator<<(std::ostream& stream, const CMSetDataRequest& request);

/// Any request that a worker takes.
using CMRequest =
    std::variant<CMGetDataRequest, CMGetRowsRequest, CMMatchRowRequest, CMSetDataRequest>;

/// The node that is asked.
[[nodiscard]] ORVA_API CMPath orvaPathOf(const CMRequest& request);

/// Answers the request with an error, if anybody wants an answer.
ORVA_API void orvaFail(const CMRequest& request, const CMError& error);
