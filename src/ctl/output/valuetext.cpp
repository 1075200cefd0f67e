// SPDX-License-Identifier: Apache-2.0
#include "output/valuetext.h"

#include "core/orvalogtext.h"
#include "core/orvaplainvalue.h"
#include "core/orvawords.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace ctl {

namespace {

Failure usage(const QString& text)
{
    return Failure{ExitStatus::Usage, text};
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

/// The JSON value that `text` is, where it is one of the type.
std::optional<QVariant> jsonFromText(const QString& text, QMetaType::Type type)
{
    const auto json = OrvaPlain::fromJson(text.toUtf8());
    return json && json->userType() == type ? std::optional(*json) : std::nullopt;
}

/// A quoted text is a JSON string; anything else is the text itself.
std::optional<QVariant> stringFromText(const QString& text)
{
    const QLatin1Char quote('"');
    const bool isQuoted = text.size() > 1 && text.startsWith(quote) && text.endsWith(quote);
    return isQuoted ? jsonFromText(text, QMetaType::QString) : QVariant(text);
}

std::optional<QVariant> stringListFromText(const QString& text)
{
    if (text.startsWith(QLatin1Char('[')))
        return jsonFromText(text, QMetaType::QVariantList);
    const auto single = stringFromText(text);
    return single ? std::optional<QVariant>(QVariantList{*single}) : std::nullopt;
}

std::optional<QVariant> contentFromText(const QString& text, const QString& type)
{
    if (type == OrvaValue::Bool())
        return boolFromText(text);
    if (type == OrvaValue::I32())
        return integerFromText(text);
    if (type == OrvaValue::Double())
        return doubleFromText(text);
    if (type == OrvaValue::String())
        return stringFromText(text);
    if (type == OrvaValue::StringList())
        return stringListFromText(text);
    return std::nullopt;
}

/// The enumeration that a value of the type carries; invalid where it carries something else.
QMetaEnum enumerationOf(const QString& type)
{
    for (const OrvaField& known : OrvaValue::fields()) {
        if (known.key == type && known.shape.values)
            return known.shape.values();
    }
    return {};
}

Outcome<OrvaValue> withNumbers(const QVariantHash& written)
{
    const auto plain = orvaWithNumbers(OrvaValue::fields(), written);
    return plain ? Outcome<OrvaValue>(OrvaValue(*plain)) : usage(plain.why());
}

Failure unsuitable(const QString& text, const QString& type)
{
    const QString alternatives = QString(type).replace(QLatin1Char('|'), QLatin1String("\" or \""));
    return usage(QStringLiteral("\"%1\" is no value of the type \"%2\".").arg(text, alternatives));
}

} // namespace

Outcome<OrvaValue> parseValue(const QString& text, const QString& type)
{
    if (looksLikeObject(text)) {
        const auto object = parseObject(text.toUtf8());
        return object ? withNumbers(*object) : object.error();
    }
    const Result sendable = checkText(text);
    if (!sendable)
        return sendable.error();
    if (type.isEmpty())
        return usage(
            QStringLiteral("The node's type is not known: write the value as {\"type\": ...}."));
    if (enumerationOf(type).isValid())
        return withNumbers({{type, text}});
    const QStringList types = type.split(QLatin1Char('|'));
    for (const QString& one : types) {
        if (const auto content = contentFromText(text, one))
            return OrvaValue(QVariantHash{{one, *content}});
    }
    return unsuitable(text, type);
}

QVariantHash inWords(const OrvaValue& value)
{
    return orvaWithWords(OrvaValue::fields(), value.__hash());
}

Outcome<QVariantHash> parseObject(const QByteArray& text)
{
    const auto json = OrvaPlain::fromJson(text);
    if (!json)
        return usage(QStringLiteral("Not a value: %1.").arg(json.why()));
    if (json->userType() != QMetaType::QVariantHash)
        return usage(QStringLiteral("Not a value: a JSON object is wanted."));
    QVariantHash object = json->toHash();
    object.remove(QStringLiteral("schema")); // of what orvactl itself wrote
    return object;
}

bool looksLikeObject(const QString& text)
{
    return text.trimmed().startsWith(QLatin1Char('{'));
}

Result checkText(const QString& text)
{
    const auto plain = OrvaPlain::fromForeign(text);
    if (plain)
        return {};
    return usage(QStringLiteral("Cannot be sent: %1.").arg(plain.why()));
}

QString toJson(const QVariant& value)
{
    return QString::fromUtf8(OrvaPlain::toJson(value));
}

QString toIndentedJson(const QVariantHash& value)
{
    const QJsonDocument document(QJsonObject::fromVariantHash(value));
    QStringList lines = QString::fromUtf8(document.toJson(QJsonDocument::Indented).trimmed())
                            .split(QLatin1Char('\n'));
    std::transform(lines.begin(), lines.end(), lines.begin(), orvaLogText);
    return lines.join(QLatin1Char('\n'));
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
