// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "literals.h"

#include <QFile>
#include <QStringList>
#include <QtTest>

/// The rows of a text file as the rows of a test, in the columns "section" and "cells".
///
/// A row is its cells, parted by " | "; a line that begins with a blank goes on with the row
/// before. "(empty)" is an empty cell. "[…]" begins a section; the rest of its line is for the
/// reader. "#" begins a comment.
inline void addTableRows(const QString& fileName)
{
    QFile file(fileName);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(fileName));
    QStringList lines;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1Char(' ')))
            lines.last() += QLatin1Char(' ') + line.trimmed();
        else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            lines << line.trimmed();
    }
    QString section;
    for (const QString& line : std::as_const(lines)) {
        if (line.startsWith(QLatin1Char('[')))
            section = line.mid(1, line.lastIndexOf(QLatin1Char(']')) - 1);
        else
            QTest::newRow(qPrintable(section.section(QLatin1Char(';'), 0, 0) + ": "_s + line))
                << section
                << line.split(" | "_s).replaceInStrings(QRegularExpression("^\\(empty\\)$"_s), {});
    }
}

/// The columns that `addTableRows()` fills.
inline void addTableColumns()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QStringList>("cells");
}
