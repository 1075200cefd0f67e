// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/savetext.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

constexpr auto ownerAlone = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

Result<> save(const QString& fileName, const QByteArray& text, QFileDevice::Permissions permissions)
{
    QDir().mkpath(QFileInfo(fileName).path());
    QSaveFile file(fileName);
    const bool saved = file.open(QIODevice::WriteOnly) && file.setPermissions(permissions) &&
                       file.write(text) == text.size() &&
                       file.flush() && // commit() does not notice that a buffered write failed
                       file.commit();
    if (!saved)
        return Failure{fileName + QStringLiteral(": ") + file.errorString()};
    return {};
}

} // namespace

Result<> saveText(const QString& fileName, const QByteArray& text)
{
    return save(fileName, text, ownerAlone | QFileDevice::ReadGroup | QFileDevice::ReadOther);
}

Result<> saveSecret(const QString& fileName, const QByteArray& text)
{
    return save(fileName, text, ownerAlone);
}
