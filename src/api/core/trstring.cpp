// SPDX-License-Identifier: Apache-2.0
#include "core/trstring.h"

#include <QCoreApplication>

#include <ostream>

TrString::TrString(const QByteArray& context, const char* text, const QList<TrArg>& arguments)
    : m_context(context)
    , m_source(text)
    , m_arguments(arguments)
{
}

QString TrString::toString() const
{
    if (m_source.isEmpty())
        return m_text;
    const QString text = QCoreApplication::translate(m_context.constData(), m_source.constData());
    // All marks are replaced at once: a mark within an argument stays as it is.
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const bool isMark = text.at(i) == QLatin1Char('%') && i + 1 < text.size();
        const int number = isMark ? text.at(i + 1).digitValue() : 0;
        if (number < 1 || number > m_arguments.size()) {
            result += text.at(i);
            continue;
        }
        result += m_arguments.at(number - 1).toString();
        ++i;
    }
    return result;
}

QByteArray trExtractContext(const char* signature)
{
    return QByteArray(signature);
}

std::ostream& operator<<(std::ostream& stream, const TrString& text)
{
    return stream << text.toString().toUtf8().constData();
}
