// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmerror.h"

CMError::CMError(const QString& name, const TrString& message, const TrString& title)
{
    setName(name);
    setTitle(title.toString());
    setMessage(message.toString());
}

TrString CMError::DefaultTitle()
{
    return TrString(trExtractContext("static TrString CMError::DefaultTitle()"), "Error");
}

CMError CMError::failed(const QString& why)
{
    return {QStringLiteral("error"), TrString(why)};
}

CMError CMError::unknownPath(const CMPath& path)
{
    return {QStringLiteral("UnknownPath"),
            TrString(trExtractContext("static CMError CMError::unknownPath(const CMPath&)"),
                     "There is no node at \"%1\".", {path.toString()})};
}

CMError CMError::wrongKind(const CMPath& path)
{
    return {QStringLiteral("WrongKind"),
            TrString(trExtractContext("static CMError CMError::wrongKind(const CMPath&)"),
                     "The node at \"%1\" is of another kind.", {path.toString()})};
}

CMError CMError::readOnly(const CMPath& path)
{
    return {QStringLiteral("ReadOnly"),
            TrString(trExtractContext("static CMError CMError::readOnly(const CMPath&)"),
                     "The node at \"%1\" is read-only.", {path.toString()})};
}

CMError CMError::malformedValue(const CMPath& path, const QString& why)
{
    return {QStringLiteral("MalformedValue"),
            TrString(trExtractContext(
                         "static CMError CMError::malformedValue(const CMPath&, const QString&)"),
                     "The value for \"%1\" is malformed: %2.", {path.toString(), why})};
}

CMError CMError::dropped()
{
    return {QStringLiteral("Dropped"),
            TrString(trExtractContext("static CMError CMError::dropped()"),
                     "The request was dropped without an answer.")};
}
