// SPDX-License-Identifier: Apache-2.0
#include "core/orvaplainvalue.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace {

/// Walks one foreign value. Stops at the first thing that is wrong and keeps the reason.
class Reader
{
public:
    explicit Reader(OrvaPlain::Limits limits)
        : m_limits(limits)
        , m_budget(limits.bytes)
    {
    }

    QVariant read(const QVariant& value, int depth);
    QVariant readMap(const QVariantMap& map, int depth);

    [[nodiscard]] bool failed() const { return !m_why.isEmpty(); }
    [[nodiscard]] QString why() const { return m_why; }

private:
    QVariant fail(const QString& why)
    {
        if (m_why.isEmpty())
            m_why = why;
        return QVariant();
    }
    bool enter(int depth)
    {
        spend(8); // An empty container costs memory too.
        if (depth > m_limits.depth)
            fail(
                QStringLiteral("the value is nested more than %1 levels deep").arg(m_limits.depth));
        return !failed();
    }
    void spend(qint64 bytes)
    {
        m_budget -= bytes;
        if (m_budget < 0)
            fail(QStringLiteral("the value is larger than %1 bytes").arg(m_limits.bytes));
    }
    QVariant readText(const QString& text);
    QVariant readInteger(qlonglong number);
    QVariant readUnsigned(qulonglong number);
    QVariant readArgument(const QDBusArgument& argument, int depth);
    QVariant readArgumentMap(const QDBusArgument& argument, int depth);
    void append(QVariantList& list, const QVariant& value, int depth);
    void insert(QVariantHash& hash, const QString& key, const QVariant& value, int depth);
    template <class List>
    QVariant readList(const List& list, int depth)
    {
        QVariantList plain;
        if (!enter(depth))
            return plain;
        for (const auto& item : list) {
            append(plain, QVariant(item), depth);
            if (failed())
                break;
        }
        return plain;
    }

    OrvaPlain::Limits m_limits;
    qint64 m_budget;
    QString m_why;
};

bool hasLoneSurrogate(const QString& text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        if (!text.at(i).isHighSurrogate() || i + 1 == text.size() ||
            !text.at(i + 1).isLowSurrogate())
            return true;
        ++i;
    }
    return false;
}

QVariant Reader::readText(const QString& text)
{
    spend(text.size() + 8);
    if (text.contains(QChar(0)))
        return fail(QStringLiteral("a text holds a NUL character"));
    if (hasLoneSurrogate(text))
        return fail(QStringLiteral("a text holds half of a surrogate pair"));
    return text;
}

QVariant Reader::readInteger(qlonglong number)
{
    using Limits = std::numeric_limits<int>;
    spend(8);
    if (number >= Limits::min() && number <= Limits::max())
        return static_cast<int>(number);
    return number;
}

QVariant Reader::readUnsigned(qulonglong number)
{
    if (number <= static_cast<qulonglong>(std::numeric_limits<qlonglong>::max()))
        return readInteger(static_cast<qlonglong>(number));
    spend(8);
    return static_cast<double>(number);
}

void Reader::append(QVariantList& list, const QVariant& value, int depth)
{
    const QVariant plain = read(value, depth + 1);
    if (plain.isValid())
        list.append(plain);
}

void Reader::insert(QVariantHash& hash, const QString& key, const QVariant& value, int depth)
{
    readText(key);
    const QVariant plain = read(value, depth + 1);
    if (plain.isValid() && !failed())
        hash.insert(key, plain);
}

QVariant Reader::readMap(const QVariantMap& map, int depth)
{
    QVariantHash plain;
    if (!enter(depth))
        return plain;
    for (auto entry = map.begin(); entry != map.end() && !failed(); ++entry)
        insert(plain, entry.key(), entry.value(), depth);
    return plain;
}

QVariant Reader::readArgumentMap(const QDBusArgument& argument, int depth)
{
    QVariantHash plain;
    argument.beginMap();
    while (!argument.atEnd() && !failed()) {
        argument.beginMapEntry();
        const QVariant key = argument.asVariant();
        const QVariant value = argument.asVariant();
        argument.endMapEntry();
        insert(plain, key.toString(), value, depth);
    }
    argument.endMap();
    return plain;
}

QVariant Reader::readArgument(const QDBusArgument& argument, int depth)
{
    if (!enter(depth))
        return QVariant();
    switch (argument.currentType()) {
    case QDBusArgument::MapType:
        return readArgumentMap(argument, depth);
    case QDBusArgument::ArrayType:
    case QDBusArgument::StructureType: {
        const bool isArray = argument.currentType() == QDBusArgument::ArrayType;
        QVariantList plain;
        isArray ? argument.beginArray() : argument.beginStructure();
        while (!argument.atEnd() && !failed())
            append(plain, argument.asVariant(), depth);
        isArray ? argument.endArray() : argument.endStructure();
        return plain;
    }
    case QDBusArgument::BasicType:
    case QDBusArgument::VariantType:
    case QDBusArgument::MapEntryType:
    case QDBusArgument::UnknownType:
        break;
    }
    return QVariant();
}

QVariant Reader::read(const QVariant& value, int depth)
{
    if (failed())
        return QVariant();
    const int type = value.userType();
    switch (type) {
    case QMetaType::Bool:
        spend(8);
        return value;
    case QMetaType::Double:
    case QMetaType::Float:
        spend(8);
        return value.toDouble();
    case QMetaType::QString:
        return readText(value.toString());
    case QMetaType::QByteArray:
        spend(value.toByteArray().size() + 8);
        return value;
    case QMetaType::SChar:
    case QMetaType::Char:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return readInteger(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return readUnsigned(value.toULongLong());
    case QMetaType::QStringList:
        return readList(value.toStringList(), depth);
    case QMetaType::QVariantList:
        return readList(value.toList(), depth);
    case QMetaType::QVariantMap:
        return readMap(value.toMap(), depth);
    case QMetaType::QVariantHash: {
        QVariantHash plain;
        const QVariantHash hash = value.toHash();
        if (enter(depth)) {
            for (auto entry = hash.begin(); entry != hash.end() && !failed(); ++entry)
                insert(plain, entry.key(), entry.value(), depth);
        }
        return plain;
    }
    default:
        break;
    }
    if (type == qMetaTypeId<QDBusArgument>())
        return readArgument(value.value<QDBusArgument>(), depth);
    if (type == qMetaTypeId<QDBusVariant>())
        // A wrapping is no level of its own; the bus itself bounds their number.
        return read(value.value<QDBusVariant>().variant(), depth);
    if (type == qMetaTypeId<QDBusObjectPath>())
        return readText(value.value<QDBusObjectPath>().path());
    if (type == qMetaTypeId<QDBusSignature>())
        return readText(value.value<QDBusSignature>().signature());
    return QVariant();
}

template <class Plain>
OrvaResult<Plain> resultOf(const Reader& reader, const Plain& plain)
{
    if (reader.failed())
        return CMError::failed(reader.why());
    return plain;
}

/// What is wrong, and where in a text of several lines, which a person has written.
QString whereIn(const QByteArray& json, const QJsonParseError& error)
{
    const auto line = json.left(error.offset - 1).count('\n') + 1;
    return json.contains('\n') ? QStringLiteral("%1, in line %2").arg(error.errorString()).arg(line)
                               : error.errorString();
}

} // namespace

OrvaResult<QVariant> OrvaPlain::fromForeign(const QVariant& foreign, Limits limits)
{
    Reader reader(limits);
    const QVariant plain = reader.read(foreign, 1);
    return resultOf(reader, plain);
}

OrvaResult<QVariantHash> OrvaPlain::hashFromBus(const QVariantMap& foreign, Limits limits)
{
    Reader reader(limits);
    const QVariant plain = reader.readMap(foreign, 1);
    return resultOf(reader, plain.toHash());
}

OrvaResult<QVariant> OrvaPlain::fromJson(const QByteArray& json, Limits limits)
{
    // QJsonDocument takes objects and arrays alone; a bare word or number is a document too.
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson('[' + json + ']', &error);
    if (error.error != QJsonParseError::NoError)
        return CMError::failed(whereIn(json, error));
    if (document.array().size() != 1)
        return CMError::failed(QStringLiteral("not one JSON value"));
    return fromForeign(document.array().at(0).toVariant(), limits);
}
