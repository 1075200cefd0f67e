#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

/// One entry of the answer to ListNodes.
struct OrvaBusNode
{
    QString path;
    QString kind; ///< "value", "activate" or "rows"
    QString title;
    QString permission;
    bool readOnly = false;
};

using OrvaBusNodes = QList<OrvaBusNode>;
using OrvaBusRows = QList<QVariantMap>;

/// A value as it goes to the bus: `a{sv}`.
using OrvaBusValue = QVariantMap;

Q_DECLARE_METATYPE(OrvaBusNode)

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusNode& node);
const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusNode& node);

/// Makes the types above known to Qt D-Bus; to be called once before the first call.
void registerBusTypes();
