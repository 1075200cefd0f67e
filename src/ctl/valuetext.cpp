#include "valuetext.h"

#include "core/orvaplainvalue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace ctl {

namespace {

Result usage(const QString& text)
{
    return {ExitStatus::Usage, text};
}

std::optional<QVariant> boolFromText(const QString& text)
{
    static const QStringList yes = {QStringLiteral("true"), QStringLiteral("on"),
                                    QStringLiteral("yes")};
    static const QStringList no = {QStringLiteral("false"), QStringLiteral("off"),
                                   QStringLiteral("no")};
    if (yes.contains(text))
        return QVariant(true);
    return no.contains(text) ? std::optional<QVariant>(false) : std::nullopt;
}

std::optional<QVariant> integerFromText(const QString& text)
{
    bool fits = false;
    const int number = text.toInt(&fits);
    return fits ? std::optional<QVariant>(number) : std::nullopt;
}

std::optional<QVariant> doubleFromText(const QString& text)
{
    bool valid = false;
    const double number = text.toDouble(&valid);
    return valid && std::isfinite(number) ? std::optional<QVariant>(number) : std::nullopt;
}

/// A JSON string stands for its text; anything else is the text itself.
QVariant stringFromText(const QString& text)
{
    const auto json = OrvaPlain::fromJson(text.toUtf8());
    return json && json->userType() == QMetaType::QString ? *json : QVariant(text);
}

QVariant stringListFromText(const QString& text)
{
    const auto json = OrvaPlain::fromJson(text.toUtf8());
    const bool isList = json && json->userType() == QMetaType::QVariantList;
    return isList ? *json : QVariant(QVariantList{stringFromText(text)});
}

std::optional<QVariant> contentFromText(const QString& text, const QString& type)
{
    if (type == OrvaValue::Bool())
        return boolFromText(text);
    if (type == OrvaValue::Double())
        return doubleFromText(text);
    if (type == OrvaValue::String())
        return stringFromText(text);
    if (type == OrvaValue::StringList())
        return stringListFromText(text);
    return integerFromText(text);
}

} // namespace

Outcome<OrvaValue> parseValue(const QString& text, const QString& type)
{
    if (looksLikeObject(text)) {
        const auto object = parseObject(text.toUtf8());
        return object ? Outcome<OrvaValue>(OrvaValue(*object)) : object.failure();
    }
    const Result sendable = checkText(text);
    if (!sendable.ok())
        return sendable;
    if (type.isEmpty())
        return usage(
            QStringLiteral("The node's type is not known: write the value as {\"type\": ...}."));
    const auto content = contentFromText(text, type);
    if (!content)
        return usage(QStringLiteral("\"%1\" is no value of the type \"%2\".").arg(text, type));
    // What was a JSON string may hold what the text itself did not.
    const auto plain = OrvaPlain::fromForeign(QVariantHash{{type, *content}});
    return plain ? Outcome<OrvaValue>(OrvaValue(plain->toHash()))
                 : usage(QStringLiteral("The value cannot be sent."));
}

Outcome<QVariantHash> parseObject(const QByteArray& text)
{
    QString why;
    const auto json = OrvaPlain::fromJson(text, &why);
    if (!json)
        return usage(QStringLiteral("Not a value: %1.").arg(why));
    if (json->userType() != QMetaType::QVariantHash)
        return usage(QStringLiteral("Not a value: a JSON object is wanted."));
    return json->toHash();
}

bool looksLikeObject(const QString& text)
{
    return text.trimmed().startsWith(QLatin1Char('{'));
}

Result checkText(const QString& text)
{
    QString why;
    if (OrvaPlain::fromForeign(text, &why))
        return {};
    return usage(QStringLiteral("Cannot be sent: %1.").arg(why));
}

QString toIndentedJson(const QVariantHash& value)
{
    const QJsonDocument document(QJsonObject::fromVariantHash(value));
    return QString::fromUtf8(document.toJson(QJsonDocument::Indented).trimmed());
}

bool holds(const QVariant& actual, const QVariant& wanted)
{
    if (wanted.userType() != QMetaType::QVariantHash)
        return orvaStrictlyEqual(actual, wanted);
    const QVariantHash present = actual.toHash();
    const QVariantHash fields = wanted.toHash();
    return std::all_of(fields.keyValueBegin(), fields.keyValueEnd(), [&present](const auto& field) {
        return present.contains(field.first) && holds(present.value(field.first), field.second);
    });
}

} // namespace ctl
