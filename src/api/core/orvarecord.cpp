// SPDX-License-Identifier: Apache-2.0
#include "core/orvarecord.h"

#include <limits>

QString orvaMalformedField(const QVector<OrvaField>& fields, const QVariantHash& hash)
{
    for (const OrvaField& field : fields) {
        const auto entry = hash.constFind(field.key);
        if (entry != hash.constEnd() && !field.accepts(*entry))
            return field.key;
    }
    return QString();
}

std::optional<qint64> orvaDecodeInt64(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::SChar:
    case QMetaType::Char:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        if (number > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
            return std::nullopt;
        return static_cast<qint64>(number);
    }
    default:
        return std::nullopt;
    }
}

std::optional<qint32> orvaDecodeInt(const QVariant& value)
{
    using Limits = std::numeric_limits<qint32>;
    const auto number = orvaDecodeInt64(value);
    if (!number || *number < Limits::min() || *number > Limits::max())
        return std::nullopt;
    return static_cast<qint32>(*number);
}

QString orvaFieldKey(const char* accessor)
{
    QString key = QString::fromLatin1(accessor);
    if (key.endsWith(QLatin1Char('_')))
        key.chop(1);
    return key;
}

QString orvaEnumName(const char* key)
{
    QString name = QString::fromLatin1(key);
    for (int i = 0; i < name.size() && name.at(i).isUpper(); ++i)
        name[i] = name.at(i).toLower();
    return name;
}
