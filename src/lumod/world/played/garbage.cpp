// SPDX-License-Identifier: Apache-2.0
#include "world/played/garbage.h"

namespace {

QVariant ofAnotherType(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return 4711;
    case QMetaType::Bool:
        return QStringLiteral("no");
    case QMetaType::Int:
        return QStringList{value.toString()};
    case QMetaType::QByteArray:
        return QVariantMap{{QStringLiteral("bytes"), 1.5}};
    default:
        return QByteArray("garbage");
    }
}

/// Every value gets a type that is not its own. Of the nested maps three in four get garbage
/// inside, and the fourth becomes garbage as a whole.
QVariantMap wrongTypes(const QVariantMap& map)
{
    QVariantMap result;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        const bool nested = entry->userType() == QMetaType::QVariantMap && result.size() % 4 != 0;
        result.insert(entry.key(),
                      nested ? QVariant(wrongTypes(entry->toMap())) : ofAnotherType(*entry));
    }
    return result;
}

/// Every second key is absent, in nested maps too.
QVariantMap missingKeys(const QVariantMap& map)
{
    QVariantMap result;
    bool keep = false;
    for (auto entry = map.begin(); entry != map.end(); ++entry, keep = !keep) {
        if (entry->userType() == QMetaType::QVariantMap)
            result.insert(entry.key(), missingKeys(entry->toMap()));
        else if (keep)
            result.insert(entry.key(), *entry);
    }
    return result;
}

/// 5000 networks more, texts of a megabyte: 10 MB in all.
QVariantMap oversized(const QVariantMap& map)
{
    constexpr int networks = 5000;
    constexpr int elementBytes = 2000;
    constexpr int textLength = 1000000;
    QVariantMap result = map;
    for (auto& value : result)
        if (value.userType() == QMetaType::QString)
            value = QString(textLength, QLatin1Char('x'));
    const bool isList = map.isEmpty() || map.first().userType() == QMetaType::QVariantMap;
    for (int i = 0; isList && i < networks; ++i)
        result.insert(QStringLiteral("oversized%1").arg(i),
                      QVariantMap{{QStringLiteral("type"), QStringLiteral("unsecured")},
                                  {QStringLiteral("signal"), -90},
                                  {QStringLiteral("ies"), QByteArray(elementBytes, '\xff')}});
    return result;
}

/// Every integer in another width that holds it.
QVariantMap otherWidths(const QVariantMap& map)
{
    QVariantMap result = map;
    int widths = 0;
    for (auto& value : result) {
        if (value.userType() == QMetaType::QVariantMap)
            value = otherWidths(value.toMap());
        else if (value.userType() == QMetaType::Int && value.toInt() < 0)
            value = QVariant::fromValue(static_cast<short>(value.toInt()));
        else if (value.userType() == QMetaType::Int && ++widths % 2 == 0)
            value = QVariant::fromValue(value.toUInt());
        else if (value.userType() == QMetaType::Int)
            value = QVariant::fromValue(value.toLongLong());
    }
    return result;
}

} // namespace

Spoiler spoilerFor(const QString& kind)
{
    static const QHash<QString, Spoiler> spoilers = {
        {QStringLiteral("none"), [](const QVariantMap& map) { return map; }},
        {QStringLiteral("wrong-types"), &wrongTypes},
        {QStringLiteral("missing-keys"), &missingKeys},
        {QStringLiteral("oversized"), &oversized},
        {QStringLiteral("other-widths"), &otherWidths},
    };
    return spoilers.value(kind);
}
