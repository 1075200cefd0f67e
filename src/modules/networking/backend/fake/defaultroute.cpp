// SPDX-License-Identifier: Apache-2.0
#include "backend/fake/defaultroute.h"

#include <QStringList>

#include <cstring>

QString defaultRouteInterface(const QByteArray& routingTable)
{
    const auto length = static_cast<int>(
        strnlen(routingTable.constData(), static_cast<std::size_t>(routingTable.size())));
    const QStringList lines =
        QString::fromLatin1(routingTable.constData(), length).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QStringList columns = line.split(QLatin1Char('\t'));
        if (columns.size() >= 2 && columns.at(1) == QLatin1String("00000000"))
            return columns.at(0);
    }
    return QString();
}
