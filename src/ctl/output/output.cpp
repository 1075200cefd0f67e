// SPDX-License-Identifier: Apache-2.0
#include "output/output.h"

#include "core/orvaplainvalue.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <numeric>
#include <unistd.h>

namespace ctl {

namespace {

void say(const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

/// A reader of the data would take a part for the whole: nothing more is done.
[[noreturn]] void loseOutput()
{
    const int why = errno;
    if (why == EPIPE) { // The bus's library has the signal ignored.
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    say(QStringLiteral("orvactl: Standard output: %1")
            .arg(QString::fromLocal8Bit(std::strerror(why))));
    _exit(int(ExitStatus::Other));
}

void write(const QByteArray& bytes)
{
    const bool written =
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) == size_t(bytes.size());
    if (std::fflush(stdout) != 0 || !written)
        loseOutput();
}

void writeLine(const QString& text)
{
    write(text.toUtf8() + '\n');
}

/// The columns of one character, whatever the locale of the program.
int columnsOf(char32_t code)
{
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (!utf8)
        return 1;
    const locale_t before = uselocale(utf8);
    const int columns = wcwidth(wchar_t(code));
    uselocale(before);
    return columns < 0 ? 1 : columns;
}

bool stdoutWantsColour(const QString& wish)
{
    if (wish == QLatin1String("always") || wish == QLatin1String("never"))
        return wish == QLatin1String("always");
    if (!qEnvironmentVariableIsEmpty("NO_COLOR"))
        return false;
    const QByteArray force = qgetenv("CLICOLOR_FORCE");
    if (!force.isEmpty() && force != "0")
        return true;
    return isatty(STDOUT_FILENO) == 1 && qgetenv("TERM") != "dumb";
}

bool stdoutHasColour = false;

QString terseCell(QString text)
{
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char(':'), QLatin1String("\\:"));
}

} // namespace

void Output::text(const std::string& text)
{
    write(QByteArray::fromStdString(text));
}

void Output::setStyle(const OutputStyle& style)
{
    m_style = style;
    stdoutHasColour = style.terse.isEmpty() && stdoutWantsColour(style.colour);
}

Result Output::checkColumns(const QStringList& columns) const
{
    if (columns.isEmpty() && !m_style.terse.isEmpty())
        return Failure{ExitStatus::Usage,
                       QStringLiteral("This command has no fields; --json is for programs.")};
    for (const QString& name : m_style.terse) {
        if (!columns.contains(name))
            return Failure{ExitStatus::Usage,
                           QStringLiteral("There is no field \"%1\"; there are %2.")
                               .arg(name, columns.join(QLatin1String(", ")))};
    }
    return {};
}

void Output::line(const QString& text) const
{
    if (!m_style.json)
        writeLine(text);
}

void Output::table(const QStringList& columns, const QVector<QStringList>& rows) const
{
    if (m_style.terse.isEmpty()) {
        table(QVector<QStringList>{columns} + rows);
        return;
    }
    for (const QStringList& row : rows) {
        QStringList cells;
        for (const QString& name : m_style.terse)
            cells.append(terseCell(row.value(columns.indexOf(name))));
        line(cells.join(QLatin1Char(':')));
    }
}

void Output::table(const QVector<QStringList>& rows) const
{
    QVector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(qMax(widths.size(), row.size()));
        for (int column = 0; column < row.size(); ++column)
            widths[column] = qMax(widths[column], displayWidth(row[column]));
    }
    for (const QStringList& row : rows) {
        QString text;
        for (int column = 0; column < row.size(); ++column)
            text += row[column] +
                    QString(widths[column] + 2 - displayWidth(row[column]), QLatin1Char(' '));
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        line(text);
    }
}

void Output::document(const QVariantHash& value) const
{
    if (!m_style.json)
        return;
    QVariantHash numbered = value;
    numbered.insert(QStringLiteral("schema"), jsonSchema);
    write(OrvaPlain::toJson(numbered) + '\n');
}

void Output::note(const QString& text) const
{
    if (!m_style.quiet)
        say(text);
}

void Output::failure(const Failure& failure) const
{
    QString text = printable(failure.text);
    QString reason = failure.reason;
    for (const StatusRow& row : statusRows()) {
        if (row.number == int(failure.status) && reason.isEmpty())
            reason = QString::fromStdString(row.reason);
    }
    if (!reason.isEmpty())
        text.prepend(reason + QLatin1String(": "));
    if (!text.isEmpty())
        say(QStringLiteral("orvactl: %1").arg(text));
}

QString Output::styled(const QString& text, Style style)
{
    if (!stdoutHasColour)
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

QString printableName(const QString& name)
{
    int begin = 0;
    int end = name.size();
    while (begin < end && name[begin].isSpace())
        ++begin;
    while (end > begin && name[end - 1].isSpace())
        --end;
    const auto code = [](QChar blank) {
        return QStringLiteral("\\u{%1}").arg(blank.unicode(), 0, 16);
    };
    QString shown = printable(name.mid(begin, end - begin));
    for (int i = begin; i-- > 0;)
        shown.prepend(code(name[i]));
    for (int i = end; i < name.size(); ++i)
        shown.append(code(name[i]));
    return shown;
}

int displayWidth(const QString& text)
{
    const auto codes = text.toUcs4();
    return std::accumulate(codes.begin(), codes.end(), 0,
                           [](int sum, char32_t code) { return sum + columnsOf(code); });
}

} // namespace ctl
