// SPDX-License-Identifier: Apache-2.0
#include "wps/wpspin.h"

#include <algorithm>

int wpsPinChecksum(quint32 number)
{
    quint32 sum = 0;
    quint32 weight = 3;
    for (quint32 rest = number; rest > 0; rest /= 10) {
        sum += weight * (rest % 10);
        weight = 4 - weight;
    }
    return static_cast<int>((10 - sum % 10) % 10);
}

QString wpsPin(quint32 number)
{
    const quint32 digits = number * 10 + static_cast<quint32>(wpsPinChecksum(number));
    return QStringLiteral("%1").arg(digits, 8, 10, QLatin1Char('0'));
}

bool isWpsPin(const QString& text)
{
    return text.size() == 8 && std::all_of(text.begin(), text.end(), [](QChar character) {
               return character >= QLatin1Char('0') && character <= QLatin1Char('9');
           });
}
