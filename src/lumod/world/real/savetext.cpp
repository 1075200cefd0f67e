// SPDX-License-Identifier: Apache-2.0
#include "world/real/savetext.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

Result<> saveText(const QString& fileName, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(fileName).path());
    QSaveFile file(fileName);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
                       file.flush() && // commit() does not notice that a buffered write failed
                       file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                           QFileDevice::ReadGroup | QFileDevice::ReadOther) &&
                       file.commit();
    if (!saved)
        return Failure{fileName + QStringLiteral(": ") + file.errorString()};
    return {};
}
