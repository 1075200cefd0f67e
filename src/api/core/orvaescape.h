// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <algorithm>

/// True if the character turns the direction of the text around it.
[[nodiscard]] inline bool orvaTurnsText(QChar character)
{
    const ushort code = character.unicode();
    return code == 0x061c || code == 0x200e || code == 0x200f ||
           (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

/// True if the character acts on the line or the terminal beside being shown. All that do are of
/// one UTF-16 unit.
[[nodiscard]] inline bool orvaRulesTerminal(QChar character)
{
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph || orvaTurnsText(character);
}

/// Text as it may stand in one line of a log or on a terminal: control characters (the 8-bit ones
/// too), separators of lines and marks that turn the direction of text as `\u` and four hexadecimal
/// digits, as JSON has them. A backslash stays: what is quoted or JSON already has its own doubled.
[[nodiscard]] inline QString orvaEscape(const QString& text)
{
    if (std::none_of(text.begin(), text.end(), orvaRulesTerminal))
        return text;
    QString escaped;
    for (const QChar character : text) {
        if (orvaRulesTerminal(character))
            escaped += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            escaped += character;
    }
    return escaped;
}
