#include "trstring.h"

#include <QtCore/QCoreApplication>

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
    QString text = QCoreApplication::translate(m_context.constData(), m_source.constData());
    for (const TrArg& argument : m_arguments)
        text = text.arg(argument.toString());
    return text;
}

QByteArray trExtractContext(const char* signature)
{
    return QByteArray(signature);
}

std::ostream& operator<<(std::ostream& stream, const TrString& text)
{
    return stream << text.toString().toUtf8().constData();
}
