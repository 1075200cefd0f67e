// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmpath.h"
#include "core/trstring.h"

/// The failure of a request: a name for programs and a message for people.
///
/// An empty error means that nothing went wrong.
class ORVA_API CMError : public OrvaHash
{
    ORVA_RECORD(CMError)
    /// An error of that name. The texts are kept in the language of the moment.
    CMError(const QString& name, const TrString& message, const TrString& title = DefaultTitle());

    /// The kind of failure, for programs; "error" where nothing more is said.
    ORVA_FIELD(QString, name, Name);
    /// The heading under which a person reads the message.
    ORVA_FIELD(QString, title, Title);
    /// The words for a person.
    ORVA_FIELD(QString, message, Message);

    /// The heading where none is given.
    static TrString DefaultTitle();

    /// "error": nothing more is known than `why`, in words for a person.
    static CMError failed(const QString& why);
    /// "UnknownPath": there is no node at `path`.
    static CMError unknownPath(const CMPath& path);
    /// "WrongKind": the node has nothing to do with such a request, as a value node with an
    /// activation.
    static CMError wrongKind(const CMPath& path);
    /// "ReadOnly": clients may not write the node.
    static CMError readOnly(const CMPath& path);
    /// "MalformedValue": the request's value does not suit the node; `why` says what is wrong with
    /// it, as the end of a sentence.
    static CMError malformedValue(const CMPath& path, const QString& why);
    /// "Dropped": the request was dropped without an answer, for example by a receiver that went
    /// away.
    static CMError dropped();
};
