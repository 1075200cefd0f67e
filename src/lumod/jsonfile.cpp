// SPDX-License-Identifier: Apache-2.0
#include "jsonfile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QByteArray withoutComments(const QByteArray& text)
{
    auto lines = text.split('\n');
    for (auto& line : lines)
        if (line.trimmed().startsWith("//"))
            line.clear(); // the line stays, so that positions in messages are the file's
    return lines.join('\n');
}

} // namespace

Result<QVariantMap> readJson(const QByteArray& commented, const QString& fileName)
{
    const auto text = withoutComments(commented);
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
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly))
        return readJson(file.readAll(), fileName);
    return Failure{QStringLiteral("%1: %2").arg(fileName, file.errorString())};
}
