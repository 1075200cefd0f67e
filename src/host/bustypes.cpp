#include "bustypes.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>

QDBusArgument& operator<<(QDBusArgument& argument, const OrvaBusNode& node)
{
    argument.beginStructure();
    argument << node.path << node.kind << node.title << node.permission << node.readOnly;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, OrvaBusNode& node)
{
    argument.beginStructure();
    argument >> node.path >> node.kind >> node.title >> node.permission >> node.readOnly;
    argument.endStructure();
    return argument;
}

void registerBusTypes()
{
    qDBusRegisterMetaType<OrvaBusRows>();
    qDBusRegisterMetaType<OrvaBusNode>();
    qDBusRegisterMetaType<OrvaBusNodes>();
}
