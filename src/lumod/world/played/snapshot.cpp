// SPDX-License-Identifier: Apache-2.0
#include "api/core/orvamask.h"
#include "wire.h"
#include "world/played/playedworld.h"

#include <QJsonArray>

namespace {

QString masked(const QString& key)
{
    return key.isEmpty() ? key : orvaMask();
}

QJsonArray toJson(const QVector<AccessPoint>& points)
{
    QJsonArray array;
    for (const auto& point : points)
        array.append(QJsonObject{{QStringLiteral("ssid"), point.ssid},
                                 {QStringLiteral("bssid"), point.bssid},
                                 {QStringLiteral("channel"), point.channel},
                                 {QStringLiteral("frequency"), point.frequency},
                                 {QStringLiteral("signal"), point.signal},
                                 {QStringLiteral("security"), toString(point.security)},
                                 {QStringLiteral("key"), masked(point.key)},
                                 {QStringLiteral("wpa3"), point.wpa3},
                                 {QStringLiteral("wps"), point.wps},
                                 {QStringLiteral("hidden"), point.hidden},
                                 {QStringLiteral("network"), point.network}});
    return array;
}

QJsonArray toJson(const QVector<KnownNetwork>& networks)
{
    QJsonArray array;
    for (const auto& network : networks)
        array.append(QJsonObject{{QStringLiteral("ssid"), network.ssid},
                                 {QStringLiteral("bssid"), network.bssid},
                                 {QStringLiteral("key"), masked(network.key)},
                                 {QStringLiteral("priority"), network.priority}});
    return array;
}

} // namespace

QJsonObject PlayedWorld::snapshot() const
{
    QJsonObject interfacesJson;
    for (const auto& interface : interfaces()) {
        auto json = QJsonObject::fromVariantMap(wire::toMap(details(interface)));
        json.insert(QStringLiteral("status"), static_cast<int>(status(interface)));
        if (m_description.softAps.contains(interface))
            json.insert(QStringLiteral("stations"),
                        QJsonArray::fromStringList(m_softAps.stations(interface)));
        interfacesJson.insert(interface, json);
    }
    return {{QStringLiteral("cable"), m_description.plugged},
            {QStringLiteral("interfaces"), interfacesJson},
            {QStringLiteral("accessPoints"), toJson(m_description.accessPoints)},
            {QStringLiteral("knownNetworks"), toJson(m_configuration.networks)},
            {QStringLiteral("wps"), m_radio.status() == InterfaceStatus::Wps}};
}
