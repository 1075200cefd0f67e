#pragma once

#include "../cmpath.h"
#include "../trstring.h"

/// What went wrong with a request: a name for programs and a message for people.
///
/// An empty error means that nothing went wrong.
class ORVA_API CMError : public OrvaHash
{
    ORVA_RECORD(CMError)
    CMError(const QString& name, const TrString& message, const TrString& title = DefaultTitle());

    /// What kind of failure it is, for programs: "error" where nothing more is said.
    ORVA_FIELD(QString, name, Name);
    /// The heading under which a person reads the message.
    ORVA_FIELD(QString, title, Title);
    /// What happened, in words for a person.
    ORVA_FIELD(QString, message, Message);

    /// The heading where none is given.
    static TrString DefaultTitle();

    // The refusals of the node tree itself.
    static CMError unknownPath(const CMPath& path);
    static CMError wrongKind(const CMPath& path);
    static CMError readOnly(const CMPath& path);
    static CMError malformedValue(const CMPath& path, const QString& why);
    /// The request was dropped without an answer, for example by a receiver that went away.
    static CMError dropped();
};
