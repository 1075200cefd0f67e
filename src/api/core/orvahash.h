// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva_global.h"

#include <QString>
#include <QVariant>

#include <iosfwd>

/// A string-keyed hash of variants: the base of every record and of every value.
///
/// A field that is absent differs from one that is present and empty; merging relies on it. What a
/// hash holds is plain: `bool`, `int`, `qlonglong`, `double`, `QString`, `QByteArray`,
/// `QVariantList` and `QVariantHash`, nothing else. Implicitly shared, a value type, usable on any
/// thread.
///
/// For a field `ip` a record has the getter `ip()`, which answers the type's default where the
/// field is absent or of another type, the setter `setIp()` and the static `Ip()`, the field's key.
class ORVA_API OrvaHash
{
public:
    OrvaHash() = default;
    /// A view over `hash`, whose values must be plain.
    OrvaHash(const QVariantHash& hash)
        : m_hash(hash)
    {
    }

    /// True if the field is present, be it empty or not.
    [[nodiscard]] bool __contains(const QString& key) const { return m_hash.contains(key); }
    /// The underlying hash.
    [[nodiscard]] const QVariantHash& __hash() const { return m_hash; }
    /// The hash as a variant, as it is stored inside another record.
    [[nodiscard]] QVariant __variant() const { return m_hash; }
    /// Keys of `other` replace or add to this one's; the others stay. Not recursive.
    void __mergeWith(const OrvaHash& other);
    /// Makes the field absent.
    void __remove(const QString& key) { m_hash.remove(key); }

    /// Makes every field absent.
    void clear() { m_hash.clear(); }
    /// True if no field is present.
    [[nodiscard]] bool isEmpty() const { return m_hash.isEmpty(); }

    /// Equal when both hold the same keys with values of the same type and content, at every level.
    friend ORVA_API bool operator==(const OrvaHash& left, const OrvaHash& right);
    /// The opposite of `==`.
    friend bool operator!=(const OrvaHash& left, const OrvaHash& right) { return !(left == right); }

protected:
    /// The fields by key; an absent one has no entry.
    QVariantHash m_hash;
};

/// Equal in type and content, at every level. `QVariant`'s own comparison converts: it holds 1,
/// true and "1" for equal.
[[nodiscard]] ORVA_API bool orvaStrictlyEqual(const QVariant& left, const QVariant& right);

/// Writes `orvaToLog` of the hash, within `orvaLogLine`. Serves every record, value and error.
ORVA_API std::ostream& operator<<(std::ostream& stream, const OrvaHash& hash);
