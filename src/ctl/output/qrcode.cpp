// SPDX-License-Identifier: Apache-2.0
#include "output/qrcode.h"

#include <array>
#include <memory>
#include <qrencode.h>

namespace ctl {

namespace {

constexpr int margin = 4; ///< modules, as the code's standard has it

QString escaped(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (QStringLiteral("\\;,\":").contains(character))
            result += QLatin1Char('\\');
        result += character;
    }
    return result;
}

/// False beyond the edges too.
bool isDark(const QRcode& code, int row, int column)
{
    return row >= 0 && row < code.width && column >= 0 && column < code.width &&
           (code.data[row * code.width + column] & 1) != 0;
}

} // namespace

QString wifiText(const QString& ssid, const QString& key)
{
    const auto type = key.isEmpty() ? QStringLiteral("nopass") : QStringLiteral("WPA");
    const auto secret = key.isEmpty() ? QString() : QStringLiteral("P:%1;").arg(escaped(key));
    return QStringLiteral("WIFI:T:") + type + QStringLiteral(";S:") + escaped(ssid) +
           QLatin1Char(';') + secret + QLatin1Char(';');
}

QStringList qrLines(const QString& text, bool inkIsDark)
{
    static const std::array<QString, 4> halves = {QStringLiteral(" "), QStringLiteral("▄"),
                                                  QStringLiteral("▀"), QStringLiteral("█")};
    const std::unique_ptr<QRcode, void (*)(QRcode*)> code(
        QRcode_encodeString(text.toUtf8().constData(), 0, QR_ECLEVEL_M, QR_MODE_8, 1), QRcode_free);
    QStringList lines;
    for (int row = -margin; code && row < code->width + margin; row += 2) {
        QString line;
        for (int column = -margin; column < code->width + margin; ++column) {
            const bool upper = isDark(*code, row, column) == inkIsDark;
            const bool lower = isDark(*code, row + 1, column) == inkIsDark;
            line += halves.at((upper ? 2U : 0U) + (lower ? 1U : 0U));
        }
        lines.append(line);
    }
    return lines;
}

} // namespace ctl
