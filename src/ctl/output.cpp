// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include "core/orvaplainvalue.h"

#include <cstdio>
#include <unistd.h>

namespace ctl {

namespace {

void write(FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

bool stdoutHasColour()
{
    static const bool colour = isatty(STDOUT_FILENO) == 1 &&
                               qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
    return colour;
}

} // namespace

void Output::line(const QString& text) const
{
    if (!m_json)
        write(stdout, text);
}

void Output::table(const QVector<QStringList>& rows) const
{
    QVector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(qMax(widths.size(), row.size()));
        for (int column = 0; column < row.size(); ++column)
            widths[column] = qMax(widths[column], row[column].size());
    }
    for (const QStringList& row : rows) {
        QString text;
        for (int column = 0; column < row.size(); ++column)
            text += row[column].leftJustified(widths[column] + 2);
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        line(text);
    }
}

void Output::document(const QVariantHash& value) const
{
    if (m_json)
        write(stdout, QString::fromUtf8(OrvaPlain::toJson(value)));
}

void Output::note(const QString& text) const
{
    write(stderr, text);
}

void Output::failure(const Failure& failure) const
{
    if (!failure.text.isEmpty())
        write(stderr, QStringLiteral("orvactl: %1").arg(printable(failure.text)));
}

QString Output::styled(const QString& text, Style style)
{
    if (!stdoutHasColour())
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(QString::number(int(style)), text);
}

bool Output::stderrIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

QString printable(const QString& text)
{
    QString shown;
    for (const char32_t code : text.toUcs4()) {
        if (QChar::isPrint(code))
            shown += QString::fromUcs4(&code, 1);
        else
            shown += QStringLiteral("\\u{%1}").arg(code, 0, 16);
    }
    return shown;
}

} // namespace ctl
