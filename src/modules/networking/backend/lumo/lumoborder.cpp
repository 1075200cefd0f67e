// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/lumoborder.h"

#include "backend/lumo/lumolog.h"
#include "core/orvaplainvalue.h"

#include <QSet>

namespace {

constexpr qint64 entryLimit = 64LL << 10; // bytes
constexpr qint64 mapLimit = 4LL << 20;    // bytes; 5000 networks with their elements fit

/// Roughly what a plain value weighs, as the border counts it.
qint64 weight(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return value.toString().size() + 8;
    case QMetaType::QByteArray:
        return value.toByteArray().size() + 8;
    case QMetaType::QVariantList: {
        qint64 sum = 8;
        const QVariantList items = value.toList();
        for (const QVariant& item : items)
            sum += weight(item);
        return sum;
    }
    case QMetaType::QVariantHash: {
        qint64 sum = 8;
        const QVariantHash hash = value.toHash();
        for (auto entry = hash.begin(); entry != hash.end(); ++entry)
            sum += entry.key().size() + 8 + weight(entry.value());
        return sum;
    }
    default:
        return 8;
    }
}

/// A plain value with each text in it, keys too, cut.
QVariant withTextsCut(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return lumoText(value.toString());
    case QMetaType::QVariantList: {
        QVariantList items = value.toList();
        for (QVariant& item : items)
            item = withTextsCut(item);
        return items;
    }
    case QMetaType::QVariantHash: {
        QVariantHash cut;
        const QVariantHash hash = value.toHash();
        for (auto entry = hash.begin(); entry != hash.end(); ++entry)
            cut.insert(lumoText(entry.key()), withTextsCut(entry.value()));
        return cut;
    }
    default:
        return value;
    }
}

} // namespace

QString lumoText(const QString& text)
{
    if (text.size() <= lumoTextLimit)
        return text;
    const bool splitsPair = text.at(lumoTextLimit - 1).isHighSurrogate();
    return text.left(splitsPair ? lumoTextLimit - 1 : lumoTextLimit);
}

QVariantMap lumoPlainMap(const QVariantMap& foreign)
{
    QVariantMap map;
    QString why;
    int dropped = 0;
    qint64 budget = mapLimit;
    OrvaPlain::Limits limits;
    limits.bytes = entryLimit;
    for (auto entry = foreign.begin(); entry != foreign.end(); ++entry) {
        const auto plain = OrvaPlain::fromForeign(entry.value(), limits);
        const qint64 cost = plain ? entry.key().size() + weight(*plain) : 0;
        if (!plain)
            why = plain.why();
        else if (cost > budget)
            why = QStringLiteral("the map is too large");
        if (!plain || !plain->isValid() || cost > budget) {
            ++dropped;
            continue;
        }
        budget -= cost;
        map.insert(lumoText(entry.key()), withTextsCut(*plain));
    }
    if (dropped > 0)
        LOG4CPLUS_WARN(lumoLogger(), "Dropped " << dropped << " of " << foreign.size()
                                                << " entries of a map from LUMO: " << why);
    return map;
}

void lumoWarnOfWrongType(const QString& key, const QVariant& value)
{
    static QSet<QString> told;
    if (told.contains(key))
        return;
    told.insert(key);
    LOG4CPLUS_WARN(lumoLogger(), "Wrong type of \"" << key << "\" from LUMO, using the default: "
                                                    << QLatin1String(value.typeName()));
}
