// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicantnetworks.h"

#include "world/real/radio/preference.h"

#include <QDBusObjectPath>

SupplicantNetworks::SupplicantNetworks(SupplicantBus& bus, bool backgroundScan)
    : m_bus(bus)
    , m_backgroundScan(backgroundScan)
{
}

void SupplicantNetworks::load(const QString& interface, QVector<KnownNetwork> networks,
                              const QString& keep)
{
    networks = byPreference(std::move(networks));
    const auto kept = at(keep);
    remove(interface, kept ? keep : QString());
    const int count = int(networks.size());
    m_loading = {interface, QVector<QString>(count), count};
    for (int place = 0; place < count; ++place) {
        const auto& network = networks.at(place);
        if (!kept || !isSameNetwork(network, *kept)) {
            add(network, place);
            continue;
        }
        m_known.insert(keep, network);
        m_bus.set(keep, SupplicantBus::network, "Properties",
                  QVariantMap{{QStringLiteral("priority"), network.priority}});
        --m_loading.missing;
    }
}

void SupplicantNetworks::clear(const QString& interface)
{
    remove(interface, QString());
}

void SupplicantNetworks::forget()
{
    ++m_turn;
    m_known.clear();
}

void SupplicantNetworks::remove(const QString& interface, const QString& keep)
{
    const auto kept = m_known.value(keep);
    if (keep.isEmpty())
        m_bus.call(interface, SupplicantBus::interface, "RemoveAllNetworks", {});
    else
        for (const auto& path : m_known.keys())
            if (path != keep)
                m_bus.call(interface, SupplicantBus::interface, "RemoveNetwork",
                           {QVariant::fromValue(QDBusObjectPath(path))});
    forget();
    if (!keep.isEmpty())
        m_known.insert(keep, kept);
}

void SupplicantNetworks::add(const KnownNetwork& network, int place)
{
    m_bus.call(m_loading.interface, SupplicantBus::interface, "AddNetwork",
               {supplicant::networkProperties(network, m_backgroundScan)},
               [this, network, place, turn = m_turn](const QDBusMessage& answer) {
                   if (turn == m_turn)
                       added(network, place, answer);
               });
}

void SupplicantNetworks::added(const KnownNetwork& network, int place, const QDBusMessage& answer)
{
    const auto path = supplicant::objectPath(answer.arguments().value(0));
    if (path.isEmpty()) {
        Q_EMIT refused(network.ssid);
    } else {
        m_known.insert(path, network);
        m_loading.paths[place] = path;
    }
    if (--m_loading.missing == 0)
        enable();
}

/// It joins the first that is enabled and can be heard, so the preferred ones go first.
void SupplicantNetworks::enable()
{
    for (const auto& path : std::as_const(m_loading.paths))
        if (!path.isEmpty())
            m_bus.set(path, SupplicantBus::network, "Enabled", true);
}

std::optional<KnownNetwork> SupplicantNetworks::at(const QString& path) const
{
    const auto found = m_known.constFind(path);
    return found == m_known.constEnd() ? std::nullopt : std::optional(*found);
}

std::optional<KnownNetwork> SupplicantNetworks::numbered(int number) const
{
    const auto end = QLatin1Char('/') + QString::number(number);
    for (auto known = m_known.constBegin(); known != m_known.constEnd(); ++known)
        if (known.key().endsWith(end))
            return *known;
    return std::nullopt;
}
