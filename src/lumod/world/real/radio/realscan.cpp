// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/realscan.h"

#include "log.h"

RealScan::RealScan(World& world, Supplicant& supplicant)
    : m_world(world)
    , m_supplicant(supplicant)
{
    connect(&supplicant, &Supplicant::scanned, this, &RealScan::end);
}

void RealScan::want()
{
    if (m_step == Step::None)
        m_step = Step::Waiting;
}

void RealScan::begin()
{
    m_step = Step::Running;
    m_supplicant.scan();
}

void RealScan::end(const QString& fault)
{
    m_step = Step::None;
    if (!fault.isEmpty())
        Q_EMIT m_world.failed(QStringLiteral("Cannot scan: ") + fault);
    Q_EMIT m_world.scanned(fault.isEmpty() ? seenNetworks() : QVector<ScannedNetwork>());
    Q_EMIT ended();
}

QVector<ScannedNetwork> RealScan::seenNetworks()
{
    QVector<ScannedNetwork> networks;
    for (const auto& bss : m_supplicant.heard()) {
        const auto name = supplicant::nameOf(bss.ssid);
        if (name) {
            networks.append({*name, supplicant::addressText(bss.bssid), bss.security(), bss.signal,
                             supplicant::channelOf(bss.frequency), bss.frequency,
                             bss.informationElements, bss.offersWpa3()});
            continue;
        }
        const bool hidden = bss.ssid.count('\0') == bss.ssid.size();
        if (!hidden && !m_unreadable.contains(bss.ssid))
            qCInfo(lcLumod) << "Leaving out a network whose name is no UTF-8:" << bss.ssid.toHex();
        m_unreadable.insert(bss.ssid);
    }
    return networks;
}
