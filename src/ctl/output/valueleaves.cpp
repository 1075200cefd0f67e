// SPDX-License-Identifier: Apache-2.0
#include "output/valueleaves.h"

#include "output/valuetext.h"

#include "network/networkrecords.h"

namespace ctl {

namespace {

/// A part of a value, as a person and as a machine reads it.
struct Part
{
    QVariant readable;
    QVariant plain;
};

/// The name by which a person knows such a record; empty where it has none.
QString nameOf(const QVariantHash& record)
{
    for (const QString& field : {OrvaNetworkInterface::Ssid(), OrvaNetworkAddress::Ip(),
                                 OrvaNetworkSoftApRequestStatus::Name()}) {
        QString name = record.value(field).toString();
        if (!name.isEmpty())
            return name;
    }
    return {};
}

void takeApart(const QString& place, const Part& part, const QString& parent, Leaves& leaves);

void takeRecordApart(const QString& place, const Part& part, const QString& parent, Leaves& leaves)
{
    const QVariantHash record = part.readable.toHash();
    const QVariantHash plain = part.plain.toHash();
    const QString name = nameOf(record);
    if (!place.isEmpty())
        leaves.insert(place,
                      {name.isEmpty() ? QStringLiteral("…") : name, part.plain, parent, true});
    for (auto it = record.cbegin(); it != record.cend(); ++it) {
        const QString below = place.isEmpty() ? it.key() : place + QLatin1Char('.') + it.key();
        takeApart(below, {it.value(), plain.value(it.key())}, place, leaves);
    }
}

/// The items of a list are told apart by their names: when one goes, the others keep theirs.
void takeListApart(const QString& place, const Part& part, const QString& parent, Leaves& leaves)
{
    const QVariantList items = part.readable.toList();
    const QVariantList plain = part.plain.toList();
    for (int i = 0; i < items.size(); ++i) {
        const QString name = nameOf(items[i].toHash());
        const QString mark = name.isEmpty() ? QString::number(i) : name;
        takeApart(QStringLiteral("%1[%2]").arg(place, mark), {items[i], plain.value(i)}, parent,
                  leaves);
    }
}

void takeApart(const QString& place, const Part& part, const QString& parent, Leaves& leaves)
{
    switch (part.readable.userType()) {
    case QMetaType::QVariantHash:
        takeRecordApart(place, part, parent, leaves);
        break;
    case QMetaType::QVariantList:
        takeListApart(place, part, parent, leaves);
        break;
    case QMetaType::QString:
        leaves.insert(place, {part.readable.toString(), part.plain, parent, false});
        break;
    default:
        leaves.insert(place, {toJson(part.readable), part.plain, parent, false});
        break;
    }
}

} // namespace

Leaves leavesOf(const OrvaValue& value)
{
    Leaves leaves;
    const QString type = value.typeKey();
    const QVariantHash readable = inWords(value);
    if (type.isEmpty())
        takeApart({}, {readable, value.__hash()}, {}, leaves);
    else
        takeApart({}, {readable.value(type), value.__hash().value(type)}, {}, leaves);
    return leaves;
}

} // namespace ctl
