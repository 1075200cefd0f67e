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

std::optional<QVariantMap> readJson(const QByteArray& commented, const QString& fileName,
                                    QString* error)
{
    const auto text = withoutComments(commented);
    QJsonParseError fault{};
    const auto document = QJsonDocument::fromJson(text, &fault);
    if (document.isObject())
        return document.object().toVariantMap();
    const auto line = text.left(fault.offset).count('\n') + 1;
    *error = QStringLiteral("%1:%2: %3")
                 .arg(fileName)
                 .arg(line)
                 .arg(fault.error == QJsonParseError::NoError ? QStringLiteral("not an object")
                                                              : fault.errorString());
    return std::nullopt;
}

std::optional<QVariantMap> readJsonFile(const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly))
        return readJson(file.readAll(), fileName, error);
    *error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
    return std::nullopt;
}
