// SPDX-License-Identifier: Apache-2.0
#include "softap/softapstations.h"

#include "backend/networkinglowlevel.h"
#include "networkinglog.h"

SoftApStations::SoftApStations(const Networking_LowLevel& backend, CMValueNode* node)
    : m_connectedStationsNode(node)
{
    connect(&backend, &Networking_LowLevel::StationConnected, this,
            &SoftApStations::on_lowlevel_StationConnected);
    connect(&backend, &Networking_LowLevel::StationDisconnected, this,
            &SoftApStations::on_lowlevel_StationDisconnected);
}

void SoftApStations::clear()
{
    m_connectedStationsNode->setValue(OrvaValue::of(QStringList()));
}

void SoftApStations::on_lowlevel_StationConnected(const QString& mac)
{
    LOG4CPLUS_INFO(networkingLogger(), "Got connected softap station: " << mac);
    QStringList stations = m_connectedStationsNode->value().stringList();
    if (!stations.contains(mac.toUpper()))
        stations << mac.toUpper();
    m_connectedStationsNode->setValue(OrvaValue::of(stations));
}

void SoftApStations::on_lowlevel_StationDisconnected(const QString& mac)
{
    LOG4CPLUS_INFO(networkingLogger(), "Got disconnected softap station: " << mac);
    QStringList stations = m_connectedStationsNode->value().stringList();
    stations.removeAll(mac.toUpper());
    m_connectedStationsNode->setValue(OrvaValue::of(stations));
}
