// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvahash.h"

#include <QMetaEnum>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <optional>
#include <type_traits>

/// The list type of repeated record fields.
template <class T>
using OrvaList = QVector<T>;

/// The form of a field of type `T` inside a record's hash.
///
/// `decode` is strict, since a record may hold what somebody else sent: an integer must be an
/// integer that fits, text must be text. `accepts` says whether a value suits the type at every
/// level; `decode` looks at the top level alone.
template <class T, class = void>
struct OrvaCodec;

struct OrvaField;

/// The content of a field beside plain values, for code that walks a record without knowing it.
struct OrvaShape
{
    /// The values of the enumeration that it holds; null where it holds none.
    QMetaEnum (*values)() = nullptr;
    /// The fields of the record that it holds; null where it holds none.
    const QVector<OrvaField>& (*fields)() = nullptr;
};

/// One row of a record: the field's key, the test that its value must pass, and what it holds.
struct OrvaField
{
    /// Under which the field stands in the record's hash.
    QString key;
    /// True if a value is of the field's type, at every level.
    bool (*accepts)(const QVariant& value);
    /// The shape of the value; for a list, that of each element.
    OrvaShape shape;
};

/// The fields of the record `Record`, in the order of their declaration.
template <class Record>
class ORVA_API OrvaFieldTable
{
public:
    /// One row a field.
    static const QVector<OrvaField>& fields() { return table(); }

    /// Adds the row of a field of the type `T`, as `ORVA_FIELD` does while its library is loaded;
    /// always true.
    template <class T>
    static bool add(const QString& key)
    {
        table().append({key, &OrvaCodec<T>::accepts, OrvaCodec<T>::shape()});
        return true;
    }

private:
    static QVector<OrvaField>& table()
    {
        static QVector<OrvaField> rows;
        return rows;
    }
};

/// The key of the first known field whose value is of the wrong type or out of range; empty when
/// there is none. Fields that the record does not know pass.
[[nodiscard]] ORVA_API QString orvaMalformedField(const QVector<OrvaField>& fields,
                                                  const QVariantHash& hash);

/// An integer of any width, if it fits into 64 bits.
[[nodiscard]] ORVA_API std::optional<qint64> orvaDecodeInt64(const QVariant& value);

/// An integer of any width, if it fits into 32 bits.
[[nodiscard]] ORVA_API std::optional<qint32> orvaDecodeInt(const QVariant& value);

/// The common base of the codecs of plain types.
struct OrvaPlainCodec
{
    /// Nothing that is to be told.
    static constexpr OrvaShape shape() { return {}; }
};

template <>
struct OrvaCodec<bool> : OrvaPlainCodec
{
    static std::optional<bool> decode(const QVariant& value)
    {
        return value.userType() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
    }
    static QVariant encode(bool value) { return value; }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
};

template <>
struct OrvaCodec<qint32> : OrvaPlainCodec
{
    static std::optional<qint32> decode(const QVariant& value) { return orvaDecodeInt(value); }
    static QVariant encode(qint32 value) { return value; }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
};

template <>
struct OrvaCodec<qint64> : OrvaPlainCodec
{
    static std::optional<qint64> decode(const QVariant& value) { return orvaDecodeInt64(value); }
    /// A plain integer has 32 bits where those do.
    static QVariant encode(qint64 value)
    {
        const auto narrow = orvaDecodeInt(QVariant(value));
        return narrow ? QVariant(*narrow) : QVariant(value);
    }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
};

template <>
struct OrvaCodec<double> : OrvaPlainCodec
{
    static std::optional<double> decode(const QVariant& value)
    {
        if (value.userType() == QMetaType::Double || value.userType() == QMetaType::LongLong)
            return value.toDouble();
        const auto integer = orvaDecodeInt(value);
        return integer ? std::optional<double>(*integer) : std::nullopt;
    }
    static QVariant encode(double value) { return value; }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
};

template <>
struct OrvaCodec<QString> : OrvaPlainCodec
{
    static std::optional<QString> decode(const QVariant& value)
    {
        return value.userType() == QMetaType::QString ? std::optional(value.toString())
                                                      : std::nullopt;
    }
    static QVariant encode(const QString& value) { return value; }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
};

/// Any plain value, as it stands.
template <>
struct OrvaCodec<QVariant> : OrvaPlainCodec
{
    static std::optional<QVariant> decode(const QVariant& value) { return value; }
    static QVariant encode(const QVariant& value) { return value; }
    static bool accepts(const QVariant&) { return true; }
};

/// Lists of any container, which `OrvaCodec` has for its own two.
template <class List>
struct OrvaListCodec
{
    /// The type of an element.
    using Item = typename List::value_type;

    /// An element of the wrong type reads as its type's default and does no harm to its neighbours.
    static std::optional<List> decode(const QVariant& value)
    {
        if (value.userType() != QMetaType::QVariantList)
            return std::nullopt;
        const QVariantList items = value.toList();
        List list;
        list.reserve(items.size());
        for (const QVariant& item : items)
            list.append(OrvaCodec<Item>::decode(item).value_or(Item()));
        return list;
    }
    /// The plain list of the elements' plain forms.
    static QVariant encode(const List& list)
    {
        QVariantList items;
        items.reserve(list.size());
        for (const Item& item : list)
            items.append(OrvaCodec<Item>::encode(item));
        return items;
    }
    /// True if it is a list of which each element suits.
    static bool accepts(const QVariant& value)
    {
        if (value.userType() != QMetaType::QVariantList)
            return false;
        const QVariantList items = value.toList();
        return std::all_of(items.begin(), items.end(), OrvaCodec<Item>::accepts);
    }
    /// That of an element.
    static OrvaShape shape() { return OrvaCodec<Item>::shape(); }
};

template <class T>
struct OrvaCodec<QVector<T>> : OrvaListCodec<QVector<T>>
{
};

/// A type of its own in Qt 5, and the vector of text in Qt 6.
template <>
struct OrvaCodec<QStringList> : OrvaListCodec<QStringList>
{
};

/// Records stand inside records as bare hashes.
template <class T>
struct OrvaCodec<T, std::enable_if_t<std::is_base_of_v<OrvaHash, T>>>
{
    static std::optional<T> decode(const QVariant& value)
    {
        return value.userType() == QMetaType::QVariantHash ? std::optional(T(value.toHash()))
                                                           : std::nullopt;
    }
    static QVariant encode(const T& record) { return record.__variant(); }
    static bool accepts(const QVariant& value)
    {
        return value.userType() == QMetaType::QVariantHash &&
               orvaMalformedField(OrvaFieldTable<T>::fields(), value.toHash()).isEmpty();
    }
    static OrvaShape shape() { return {nullptr, &OrvaFieldTable<T>::fields}; }
};

/// Enumerations stand inside records as 32-bit integers. A number that names no value is refused.
template <class T>
struct OrvaCodec<T, std::enable_if_t<std::is_enum_v<typename T::Value>>>
{
    static std::optional<T> decode(const QVariant& value)
    {
        const auto number = orvaDecodeInt(value);
        if (!number || !T::isKnown(*number))
            return std::nullopt;
        return T(static_cast<typename T::Value>(*number));
    }
    static QVariant encode(T value)
    {
        return static_cast<qint32>(static_cast<typename T::Value>(value));
    }
    static bool accepts(const QVariant& value) { return decode(value).has_value(); }
    static OrvaShape shape() { return {&T::values}; }
};

/// The field `key` of `hash`; the default of `T` when it is absent or of another type.
template <class T>
[[nodiscard]] T orvaField(const QVariantHash& hash, const QString& key)
{
    const auto entry = hash.constFind(key);
    if (entry == hash.constEnd())
        return T();
    return OrvaCodec<T>::decode(*entry).value_or(T());
}

/// The key string of a field: its accessor's name without a trailing underscore.
[[nodiscard]] ORVA_API QString orvaFieldKey(const char* accessor);

/// The word for an enumeration's value, as texts and the wire have it: its name with the capitals
/// that it begins with in lower case.
[[nodiscard]] ORVA_API QString orvaEnumName(const char* key);

// clang-format off

/// Opens a record class: its constructors and the name by which its fields find it.
#define ORVA_RECORD(Record)                                                                        \
public:                                                                                            \
    using Self = Record;                                                                           \
    Record() = default;                                                                            \
    Record(const OrvaHash& hash) : OrvaHash(hash) {}                                               \
    explicit Record(const QVariantHash& hash) : OrvaHash(hash) {}                                  \
    static const QVector<OrvaField>& fields() { return OrvaFieldTable<Self>::fields(); }

/// Declares one field of a record, on one row: the static key name `Name()`, the getter `name()`, the
/// setter `setName()`, `editName(change)`, which puts the field back after `change(Type&)`, and the row
/// of the record's field table. The key is a heap string of its own, so that it outlives the library
/// that used it.
#define ORVA_FIELD(Type, name, Name)                                                               \
    static const QString& Name()                                                                   \
    {                                                                                              \
        static const QString key = orvaFieldKey(#name);                                            \
        return key;                                                                                \
    }                                                                                              \
    [[nodiscard]] Type name() const { return orvaField<Type>(m_hash, Name()); }                    \
    void set##Name(const Type& value) { m_hash.insert(Name(), OrvaCodec<Type>::encode(value)); }   \
    template <class Change>                                                                        \
    void edit##Name(const Change& change)                                                          \
    {                                                                                              \
        Type edited = name();                                                                      \
        change(edited);                                                                            \
        set##Name(edited);                                                                         \
    }                                                                                              \
    inline static const bool s_##name##Listed =                                                    \
        OrvaFieldTable<Self>::add<Type>(orvaFieldKey(#name))

/// Completes a class that wraps the enumeration `Value` (declared in it with `Q_ENUM`): it converts from
/// and to the enumeration, so that it can be switched over, and names its values.
#define ORVA_ENUM(Enumeration)                                                                     \
public:                                                                                            \
    constexpr Enumeration(Value value = static_cast<Value>(0)) : m_value(value) {}                 \
    constexpr operator Value() const { return m_value; }                                           \
    static QMetaEnum values() { return QMetaEnum::fromType<Value>(); }                             \
    static bool isKnown(qint32 number) { return values().valueToKey(number) != nullptr; }          \
    static QString toString(Enumeration value)                                                     \
    {                                                                                              \
        return orvaEnumName(values().valueToKey(value.m_value));                                   \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    Value m_value

// clang-format on
