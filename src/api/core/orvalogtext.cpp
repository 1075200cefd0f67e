// SPDX-License-Identifier: Apache-2.0
#include "core/orvalogtext.h"

#include "core/orvaescape.h"
#include "core/orvamask.h"

#include <QStringList>

#include <utility>

namespace {

QString scalarToLog(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return QLatin1Char('"') + orvaLogText(value.toString()) + QLatin1Char('"');
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    case QMetaType::UnknownType:
        return QStringLiteral("none");
    default:
        return value.toString();
    }
}

/// A secret's value is hidden, be it a text or a container; an empty one is shown as empty.
QString fieldToLog(const QString& key, const QVariant& value)
{
    const bool isEmptyText = value.userType() == QMetaType::QString && value.toString().isEmpty();
    const bool hide = orvaIsSecretKey(key) && !isEmptyText;
    return orvaLogText(key) + QStringLiteral(": ") + (hide ? orvaMask() : orvaToLog(value));
}

/// A fixed order, so that two runs write the same line.
QString hashToLog(const QVariantHash& hash)
{
    QStringList keys = hash.keys();
    keys.sort();
    QStringList fields;
    for (const QString& key : std::as_const(keys))
        fields << fieldToLog(key, hash.value(key));
    return QLatin1Char('{') + fields.join(QStringLiteral(", ")) + QLatin1Char('}');
}

QVariantHash toHash(const QVariantMap& map)
{
    QVariantHash hash;
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        hash.insert(entry.key(), entry.value());
    return hash;
}

} // namespace

bool orvaIsSecretKey(const QString& key)
{
    static const QStringList names = {QStringLiteral("key"),           QStringLiteral("wpa_psk"),
                                      QStringLiteral("psk"),           QStringLiteral("passphrase"),
                                      QStringLiteral("password"),      QStringLiteral("wep_key"),
                                      QStringLiteral("wpa_passphrase")};
    return names.contains(key, Qt::CaseInsensitive);
}

QString orvaLogText(const QString& text)
{
    return orvaEscape(text);
}

QString orvaLogLine(const QString& text)
{
    constexpr int longest = 65536;
    if (text.size() <= longest)
        return text;
    return text.left(longest) + QStringLiteral("... (%1 characters)").arg(text.size());
}

QString orvaToLog(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QVariantHash:
        return hashToLog(value.toHash());
    case QMetaType::QVariantMap:
        return hashToLog(toHash(value.toMap()));
    case QMetaType::QVariantList: {
        QStringList items;
        const QVariantList list = value.toList();
        for (const QVariant& item : list)
            items << orvaToLog(item);
        return QLatin1Char('[') + items.join(QStringLiteral(", ")) + QLatin1Char(']');
    }
    default:
        return scalarToLog(value);
    }
}
