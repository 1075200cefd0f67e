// SPDX-License-Identifier: Apache-2.0
#include "valueleaves.h"

#include "valuetext.h"

#include "network/networkrecords.h"

namespace ctl {

namespace {

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

void takeApart(const QString& place, const QVariant& value, const QString& parent, Leaves& leaves);

void takeRecordApart(const QString& place, const QVariantHash& record, const QString& parent,
                     Leaves& leaves)
{
    const QString name = nameOf(record);
    if (!place.isEmpty())
        leaves.insert(place, {name.isEmpty() ? QStringLiteral("…") : name, parent, true});
    for (auto it = record.cbegin(); it != record.cend(); ++it) {
        const QString below = place.isEmpty() ? it.key() : place + QLatin1Char('.') + it.key();
        takeApart(below, it.value(), place, leaves);
    }
}

/// The items of a list are told apart by their names: when one goes, the others keep theirs.
void takeListApart(const QString& place, const QVariantList& items, const QString& parent,
                   Leaves& leaves)
{
    for (int i = 0; i < items.size(); ++i) {
        const QString name = nameOf(items[i].toHash());
        const QString mark = name.isEmpty() ? QString::number(i) : name;
        takeApart(QStringLiteral("%1[%2]").arg(place, mark), items[i], parent, leaves);
    }
}

void takeApart(const QString& place, const QVariant& value, const QString& parent, Leaves& leaves)
{
    switch (value.userType()) {
    case QMetaType::QVariantHash:
        takeRecordApart(place, value.toHash(), parent, leaves);
        break;
    case QMetaType::QVariantList:
        takeListApart(place, value.toList(), parent, leaves);
        break;
    case QMetaType::QString:
        leaves.insert(place, {value.toString(), parent, false});
        break;
    default:
        leaves.insert(place, {toJson(value), parent, false});
        break;
    }
}

} // namespace

Leaves leavesOf(const OrvaValue& value)
{
    Leaves leaves;
    const QString type = value.typeKey();
    const QVariantHash readable = inWords(value);
    takeApart({}, type.isEmpty() ? QVariant(readable) : readable.value(type), {}, leaves);
    return leaves;
}

} // namespace ctl
