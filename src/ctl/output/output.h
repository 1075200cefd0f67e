// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/outcome.h"

#include <QStringList>
#include <QVariantHash>
#include <QVector>

#include <string>

namespace ctl {

/// The form of output that a person wants.
struct OutputStyle
{
    bool json = false;      ///< one JSON document a line on stdout and nothing else
    bool quiet = false;     ///< no remarks on stderr
    QString colour = {};    ///< "always", "never"; anything else: where stdout is a terminal
    QStringList terse = {}; ///< the columns of a table to write, in this order; empty for a page
};

/// The number of what JSON documents look like; it changes with what a program cannot overlook.
constexpr int jsonSchema = 1;

/// Writes what the commands have to say: data to stdout, all else to stderr.
class Output
{
public:
    /// The look of a piece of a person's page where there is colour, by the terminal's code.
    enum class Style { Bold = 1, Dim = 2, Bad = 31, Good = 32, Ink = 30, Paper = 107 };

    /// NO_COLOR and CLICOLOR_FORCE count where the style leaves the colour open.
    void setStyle(const OutputStyle& style);
    [[nodiscard]] bool json() const { return m_style.json; }

    /// Fails where the style names a column that is none of `columns`.
    [[nodiscard]] Result checkColumns(const QStringList& columns) const;

    /// Text on stdout as it stands. What cannot be written ends the program, here and in all that
    /// writes data: silently where the reader has gone, else with the status Other.
    static void text(const std::string& text);

    /// A line for a person; says nothing in JSON mode.
    void line(const QString& text) const;
    /// Lines for a person below their headings, columns lined up two blanks apart; terse ones have
    /// colons between the values, and a backslash before a colon or backslash within.
    void table(const QStringList& columns, const QVector<QStringList>& rows) const;
    /// Lines that need no headings.
    void table(const QVector<QStringList>& rows) const;
    /// A document for a machine, with the number of its schema; says nothing outside JSON mode.
    void document(const QVariantHash& value) const;
    /// A remark on stderr.
    void note(const QString& text) const;
    /// Why the command failed, on stderr.
    void failure(const Failure& failure) const;

    /// `text` with the style's colour codes, where stdout is a terminal and NO_COLOR is not set.
    [[nodiscard]] static QString styled(const QString& text, Style style);

    /// True if a person reads stderr.
    [[nodiscard]] static bool stderrIsTerminal();

private:
    OutputStyle m_style;
};

/// Foreign text made harmless for a terminal: what does not print shows as its code.
[[nodiscard]] QString printable(const QString& text);

/// The same for a name, whose blanks at either end show as their codes too.
[[nodiscard]] QString printableName(const QString& name);

/// The columns of a terminal that the printable text takes.
[[nodiscard]] int displayWidth(const QString& text);

} // namespace ctl
