// SPDX-License-Identifier: Apache-2.0
#include "core/orvawords.h"

#include <functional>

namespace {

/// Spells the value of an enumeration that a field holds.
using Spell = std::function<QVariant(const OrvaField& field, const QVariant& value)>;

QVariantHash spelled(const QVector<OrvaField>& fields, QVariantHash hash, const Spell& spell);

QVariant spelled(const OrvaField& field, const QVariant& value, const Spell& spell)
{
    switch (value.userType()) {
    case QMetaType::QVariantList: {
        QVariantList items = value.toList();
        for (QVariant& item : items)
            item = spelled(field, item, spell);
        return items;
    }
    case QMetaType::QVariantHash:
        return field.shape.fields ? spelled(field.shape.fields(), value.toHash(), spell) : value;
    default:
        return field.shape.values ? spell(field, value) : value;
    }
}

QVariantHash spelled(const QVector<OrvaField>& fields, QVariantHash hash, const Spell& spell)
{
    for (const OrvaField& field : fields) {
        const auto entry = hash.find(field.key);
        if (entry != hash.end())
            *entry = spelled(field, *entry, spell);
    }
    return hash;
}

CMError unknownWord(const OrvaField& field, const QString& text)
{
    return {QStringLiteral("UnknownWord"),
            TrString(
                trExtractContext("CMError unknownWord(const OrvaField&, const QString&)"),
                "\"%1\" is none of the values of \"%2\": %3.",
                {text, field.key, orvaEnumWords(field.shape.values()).join(QStringLiteral(", "))})};
}

} // namespace

QStringList orvaEnumWords(const QMetaEnum& values)
{
    QStringList words;
    for (int i = 0; i < values.keyCount(); ++i)
        words.append(orvaEnumName(values.key(i)));
    return words;
}

std::optional<qint32> orvaEnumNumber(const QMetaEnum& values, const QString& text)
{
    for (int i = 0; i < values.keyCount(); ++i) {
        if (text.compare(QLatin1String(values.key(i)), Qt::CaseInsensitive) == 0 ||
            text == QString::number(values.value(i)))
            return values.value(i);
    }
    return std::nullopt;
}

QVariantHash orvaWithWords(const QVector<OrvaField>& fields, const QVariantHash& plain)
{
    return spelled(fields, plain, [](const OrvaField& field, const QVariant& value) {
        const auto number = orvaDecodeInt(value);
        const char* key = number ? field.shape.values().valueToKey(*number) : nullptr;
        return key ? QVariant(orvaEnumName(key)) : value;
    });
}

OrvaResult<QVariantHash> orvaWithNumbers(const QVector<OrvaField>& fields,
                                         const QVariantHash& written)
{
    CMError error;
    const QVariantHash plain =
        spelled(fields, written, [&error](const OrvaField& field, const QVariant& value) {
            if (value.userType() != QMetaType::QString)
                return value;
            const auto number = orvaEnumNumber(field.shape.values(), value.toString());
            if (!number && error.isEmpty())
                error = unknownWord(field, value.toString());
            return number ? QVariant(*number) : value;
        });
    return error.isEmpty() ? OrvaResult<QVariantHash>(plain) : error;
}
