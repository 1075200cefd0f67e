#pragma once

#include <QVariantMap>

#include <optional>

/// How a faulty daemon spoils its maps.
enum class Garbage {
    None,
    WrongTypes,  ///< every value has a type that is not its own
    MissingKeys, ///< every second key is absent, in nested maps too
    Oversized,   ///< 5000 networks more, texts of a megabyte: 10 MB in all
};

/// "none", "wrong-types", "missing-keys" or "oversized"; nothing for another text.
std::optional<Garbage> garbageFrom(const QString& text);

/// `map` spoiled.
QVariantMap spoil(const QVariantMap& map, Garbage kind);
