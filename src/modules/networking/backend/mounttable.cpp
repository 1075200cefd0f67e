// SPDX-License-Identifier: Apache-2.0
#include "backend/mounttable.h"

#include <QStringList>
#include <QTextStream>

namespace {

bool isNetworkFileSystem(const QString& type)
{
    static const QStringList types = {QStringLiteral("nfs"), QStringLiteral("smbfs"),
                                      QStringLiteral("ncp"), QStringLiteral("coda")};
    return types.contains(type);
}

} // namespace

bool isRootOnNetwork(QIODevice& mountTable)
{
    QTextStream stream(&mountTable);
    QString line;
    while (stream.readLineInto(&line)) {
        const QStringList fields = line.split(QLatin1Char(' '));
        if (fields.size() < 3)
            continue;
        if (fields.at(1) == QLatin1String("/") && fields.at(0) != QLatin1String("rootfs"))
            return isNetworkFileSystem(fields.at(2));
    }
    return false;
}
