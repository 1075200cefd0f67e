// SPDX-License-Identifier: Apache-2.0
#include "common/bustypes.h"

#include "core/orvaplainvalue.h"

#include <QDBusArgument>
#include <QDBusMetaType>

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusNode& node)
{
    argument.beginStructure();
    argument << node.path << node.kind << node.title << node.permission << node.readOnly
             << node.type;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusNode& node)
{
    argument.beginStructure();
    argument >> node.path >> node.kind >> node.title >> node.permission >> node.readOnly >>
        node.type;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusValue& value)
{
    return argument << OrvaPlain::toBus(value.plain.value_or({}));
}

const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusValue& value)
{
    const auto plain = OrvaPlain::fromForeign(QVariant::fromValue(argument));
    if (plain)
        value.plain = plain->toHash();
    else
        value.plain = plain.error();
    return argument;
}

qint64 orvaBusSize(const QVariant& plain)
{
    constexpr qint64 each = 16; // Signature, length and padding.
    qint64 size = each;
    switch (plain.userType()) {
    case QMetaType::QString:
        return size + plain.toString().toUtf8().size();
    case QMetaType::QByteArray:
        return size + plain.toByteArray().size();
    case QMetaType::QVariantList: {
        const auto items = plain.toList();
        for (const QVariant& item : items)
            size += orvaBusSize(item);
        return size;
    }
    case QMetaType::QVariantHash: {
        const auto entries = plain.toHash();
        for (auto entry = entries.begin(); entry != entries.end(); ++entry)
            size += each + entry.key().toUtf8().size() + orvaBusSize(entry.value());
        return size;
    }
    default:
        return size;
    }
}

void registerBusTypes()
{
    qDBusRegisterMetaType<OrvaBusRows>();
    qDBusRegisterMetaType<OrvaBusNode>();
    qDBusRegisterMetaType<OrvaBusNodes>();
    qDBusRegisterMetaType<OrvaBusValue>();
}
