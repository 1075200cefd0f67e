// SPDX-License-Identifier: Apache-2.0
// The maps by which wpa_supplicant tells of access points and WPS sessions on the bus.
#include "target.h"

#include "world/real/radio/supplicantdecoding.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QStringList keys{
        QStringLiteral("SSID"),        QStringLiteral("BSSID"),  QStringLiteral("Privacy"),
        QStringLiteral("WPA"),         QStringLiteral("RSN"),    QStringLiteral("KeyMgmt"),
        QStringLiteral("Frequency"),   QStringLiteral("Signal"), QStringLiteral("IEs"),
        QStringLiteral("AuthType"),    QStringLiteral("Key"),    QStringLiteral("rssi"),
        QStringLiteral("config_error")};
    const auto map = ForeignValues(data, size, keys).takeMap();
    supplicant::Bss bss;
    supplicant::take(map, bss);
    require(bss.ssid.size() <= 32 && (bss.bssid.isEmpty() || bss.bssid.size() == 6));
    const auto name = supplicant::nameOf(bss.ssid);
    require(!name || name->toUtf8() == bss.ssid);
    require(supplicant::channelOf(bss.frequency) >= 0);
    require(bss.security() != Security::Open || !bss.privacy);
    require(supplicant::state(map).value_or(supplicant::State::Away) == supplicant::State::Away);
    require(supplicant::signalLevel(map).has_value() <= map.contains(QStringLiteral("rssi")));
    require(!supplicant::wpsFailure(QStringLiteral("fail"), map).isEmpty());
    if (const auto credentials = supplicant::wpsCredentials(map)) {
        require(!credentials->ssid.isEmpty() && credentials->ssid.toUtf8().size() <= 32);
        require((credentials->security == Security::Open) == credentials->key.isEmpty());
    }
    return 0;
}
