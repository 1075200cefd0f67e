// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

#include <QVariantMap>

/// A text that the connection daemon sent, cut after its first 4096 characters: it is published and
/// logged.
constexpr int lumoTextLimit = 4096;
[[nodiscard]] QString lumoText(const QString& text);

/// A map that the connection daemon sent, as plain values, its texts cut. An entry that is too
/// deep, too large (64 KiB, and 4 MiB in all) or otherwise unfit is dropped with a warning and does
/// no harm to the others.
[[nodiscard]] QVariantMap lumoPlainMap(const QVariantMap& foreign);

/// Says, once for each key, that the daemon sent a value of a wrong type.
void lumoWarnOfWrongType(const QString& key, const QVariant& value);

/// The entry `key` of a plain map (`QVariantMap` or `QVariantHash`) of the daemon's. The type's
/// default when it is absent or of another type. An integer of any width is taken if it fits into
/// 32 bits.
template <class T, class Map>
[[nodiscard]] T lumoField(const Map& map, const char* key)
{
    const auto entry = map.constFind(QLatin1String(key));
    if (entry == map.constEnd())
        return T();
    const auto value = OrvaCodec<T>::decode(*entry);
    if (!value)
        lumoWarnOfWrongType(QLatin1String(key), *entry);
    return value.value_or(T());
}
