// SPDX-License-Identifier: Apache-2.0
#include "jsonfile.h"

#include "common/commentedjson.h"

#include <QJsonDocument>
#include <QJsonObject>

Result<QVariantMap> readJson(const QByteArray& text, const QString& fileName)
{
    QJsonParseError fault{};
    const auto document = QJsonDocument::fromJson(text, &fault);
    if (document.isObject())
        return document.object().toVariantMap();
    const auto line = text.left(fault.offset).count('\n') + 1;
    return Failure{QStringLiteral("%1:%2: %3")
                       .arg(fileName)
                       .arg(line)
                       .arg(fault.error == QJsonParseError::NoError
                                ? QStringLiteral("not an object")
                                : fault.errorString())};
}

Result<QVariantMap> readJsonFile(const QString& fileName)
{
    const auto text = readCommentedJson(fileName);
    if (text)
        return readJson(*text, fileName);
    return Failure{QStringLiteral("%1: %2").arg(fileName, text.why())};
}
