// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaplainvalue.h"

#include <QList>
#include <QMetaType>
#include <QVariant>

class QDBusArgument;

/// The rows of a list node as they go to the bus: `aa{sv}`.
using OrvaBusRows = QList<QVariantMap>;

/// One node as `ListNodes` tells of it: `(ssssbs)`.
struct OrvaBusNode
{
    QString path;
    QString kind;       ///< "value", "activate" or "rows".
    QString title;      ///< The text that a person reads.
    QString permission; ///< "default" or "service".
    bool readOnly = false;
    QString type; ///< Type keys of what it holds or takes, "|" between them.
};
using OrvaBusNodes = QList<OrvaBusNode>;

/// A value as a client sends it, `a{sv}`: the host unpacks it no further than the border's limits.
/// Holds what is wrong with it where it does not pass.
struct OrvaBusValue
{
    OrvaResult<QVariantHash> plain = QVariantHash();
};

/// About how many bytes a plain value takes on the bus.
[[nodiscard]] qint64 orvaBusSize(const QVariant& plain);

Q_DECLARE_METATYPE(OrvaBusRows)
Q_DECLARE_METATYPE(OrvaBusNode)
Q_DECLARE_METATYPE(OrvaBusNodes)
Q_DECLARE_METATYPE(OrvaBusValue)

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusNode& node);
const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusNode& node);

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusValue& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusValue& value);

/// Makes the types known to QtDBus; to be called before the first of them goes to the bus.
void registerBusTypes();
