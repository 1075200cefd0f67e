// SPDX-License-Identifier: Apache-2.0
#include "standins/fixedvalues.h"

#include "network/networkpaths.h"

FixedValues::FixedValues(const QString& name, const QVector<QPair<CMPath, OrvaValue>>& values)
    : CMNodesWorker(QVariantHash(), name)
{
    for (const auto& [path, value] : values)
        CMValueNode::create(nodes(), orvaNetworkNode(path))->setValue(value);
}

std::unique_ptr<CMAbstractWorker> createInterfaceNames(const QString& wired,
                                                       const QString& wireless)
{
    return std::make_unique<FixedValues>(
        QStringLiteral("InterfaceNames"),
        QVector<QPair<CMPath, OrvaValue>>{
            {OrvaNetworkWiredInterfacePath(), OrvaValue::of(wired)},
            {OrvaNetworkWirelessInterfacePath(), OrvaValue::of(wireless)}});
}

std::unique_ptr<CMAbstractWorker> createWebserver(qint32 port)
{
    return std::make_unique<FixedValues>(
        QStringLiteral("Webserver"),
        QVector<QPair<CMPath, OrvaValue>>{{OrvaWebserverPortPath(), OrvaValue::of(port)}});
}
