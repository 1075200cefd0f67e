// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "api/core/orvaresult.h"

#include <QFile>

/// Why a file could not be read, for the end of a sentence.
struct UnreadableFile
{
    QString text;

    [[nodiscard]] QString message() const { return text; }
};

/// JSON whose lines that begin with "//" are left empty. They stay, so that positions in messages
/// are the file's.
[[nodiscard]] inline QByteArray withoutComments(const QByteArray& text)
{
    QList<QByteArray> lines = text.split('\n');
    for (QByteArray& line : lines) {
        if (line.trimmed().startsWith("//"))
            line.clear();
    }
    return lines.join('\n');
}

/// The text of a configuration file, without its comments.
[[nodiscard]] inline OrvaResult<QByteArray, UnreadableFile>
readCommentedJson(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return UnreadableFile{file.errorString()};
    return withoutComments(file.readAll());
}
