// SPDX-License-Identifier: Apache-2.0
#include "log.h"

namespace {

QtMessageHandler writeLine = nullptr;

/// True if the character acts beside being shown: control characters, line ends and the marks that
/// turn a text's direction do.
bool isUnseen(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString escaped(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (isUnseen(character))
            result += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

void writeEscaped(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    writeLine(type, context, escaped(text));
}

} // namespace

Q_LOGGING_CATEGORY(lcLumod, "lumod")

void escapeLog()
{
    writeLine = qInstallMessageHandler(writeEscaped);
}
