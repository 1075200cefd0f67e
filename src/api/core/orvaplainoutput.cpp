// SPDX-License-Identifier: Apache-2.0
// The way out: plain values to the bus and to JSON.
#include "core/orvalogtext.h"
#include "core/orvaplainvalue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QVariant toBusValue(const QVariant& plain)
{
    if (plain.userType() == QMetaType::QVariantHash)
        return OrvaPlain::toBus(plain.toHash());
    if (plain.userType() != QMetaType::QVariantList)
        return plain;
    QVariantList items;
    const QVariantList list = plain.toList();
    for (const QVariant& item : list) {
        if (item.isValid())
            items.append(toBusValue(item));
    }
    return items;
}

QJsonValue toJsonValue(const QVariant& plain)
{
    switch (plain.userType()) {
    case QMetaType::QVariantHash: {
        QJsonObject object;
        const QVariantHash hash = plain.toHash();
        for (auto entry = hash.begin(); entry != hash.end(); ++entry)
            object.insert(entry.key(), toJsonValue(entry.value()));
        return object;
    }
    case QMetaType::QVariantList: {
        QJsonArray array;
        const QVariantList list = plain.toList();
        for (const QVariant& item : list)
            array.append(toJsonValue(item));
        return array;
    }
    case QMetaType::QByteArray:
        return QString::fromLatin1(plain.toByteArray().toHex());
    default:
        return QJsonValue::fromVariant(plain);
    }
}

} // namespace

QByteArray OrvaPlain::toJson(const QVariant& plain)
{
    const QByteArray wrapped =
        QJsonDocument(QJsonArray{toJsonValue(plain)}).toJson(QJsonDocument::Compact);
    const QByteArray json = wrapped.mid(1, wrapped.size() - 2);
    // Such characters stand only within texts, where an escape means the same.
    return orvaLogText(QString::fromUtf8(json)).toUtf8();
}

QVariantMap OrvaPlain::toBus(const QVariantHash& plain)
{
    QVariantMap map;
    for (auto entry = plain.begin(); entry != plain.end(); ++entry) {
        if (entry->isValid())
            map.insert(entry.key(), toBusValue(entry.value()));
    }
    return map;
}
