// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/preference.h"

#include <algorithm>

bool isSameNetwork(const KnownNetwork& a, const KnownNetwork& b)
{
    return a.ssid == b.ssid && a.security == b.security && a.key == b.key && a.bssid == b.bssid;
}

QVector<KnownNetwork> byPreference(QVector<KnownNetwork> networks)
{
    std::stable_sort(networks.begin(), networks.end(),
                     [](const auto& a, const auto& b) { return a.priority > b.priority; });
    return networks;
}

bool isBest(const KnownNetwork& joined, const QVector<KnownNetwork>& networks,
            const QList<supplicant::Bss>& heard)
{
    for (const auto& network : networks) {
        if (isSameNetwork(network, joined))
            return true;
        const bool isHeard = std::any_of(heard.begin(), heard.end(), [&network](const auto& bss) {
            return bss.ssid == network.ssid.toUtf8() && bss.security() == network.security;
        });
        if (isHeard)
            return false;
    }
    return false;
}
