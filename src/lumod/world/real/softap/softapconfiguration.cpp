// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/softapconfiguration.h"

#include <QHostAddress>

namespace {

constexpr int lastOf2GHz = 14;

quint32 numberOf(const QString& address)
{
    return QHostAddress(address).toIPv4Address();
}

QByteArray textOf(quint32 address)
{
    return QHostAddress(address).toString().toLatin1();
}

bool isSharedWithRadar(int channel)
{
    constexpr int first = 52;
    constexpr int last = 144;
    return channel >= first && channel <= last;
}

/// The addresses for stations.
struct Range
{
    quint32 from;
    quint32 to;
};

Range rangeOf(const SoftApSettings& settings)
{
    constexpr quint32 most = 100; // stations, more than any access point of this kind holds
    constexpr quint32 reserved = 10;
    const quint32 hosts = ~quint32(0) >> settings.prefix;
    const quint32 network = numberOf(settings.address) & ~hosts;
    const Range usable{network + 1, network + hosts - 1};
    const Range wanted{numberOf(settings.dhcpFrom), numberOf(settings.dhcpTo)};
    if (usable.from <= wanted.from && wanted.from <= wanted.to && wanted.to <= usable.to)
        return wanted;
    return hosts > most + reserved ? Range{network + reserved, network + most} : usable;
}

} // namespace

QString hostapdDirectory(const QString& runtimeDirectory)
{
    return runtimeDirectory + QStringLiteral("/ap");
}

QByteArray hostapdConfiguration(const SoftApSettings& settings, const SoftApPlace& place)
{
    const auto country = settings.country.isEmpty() ? place.country : settings.country;
    QByteArray text = "interface=" + place.interface.toUtf8() + "\ndriver=nl80211\n";
    text += "ctrl_interface=" + hostapdDirectory(place.directory).toUtf8() + '\n';
    if (!country.isEmpty())
        text += "country_code=" + country.toLatin1() + "\nieee80211d=1\n";
    if (!country.isEmpty() && isSharedWithRadar(place.channel))
        text += "ieee80211h=1\n"; // without which it refuses them
    text += place.channel > lastOf2GHz ? "hw_mode=a\n" : "hw_mode=g\n";
    text += "channel=" + QByteArray::number(place.channel) + '\n';
    text += "ssid2=" + settings.ssid.toUtf8().toHex() + "\nutf8_ssid=1\n";
    if (!settings.vendorElements.isEmpty())
        text += "vendor_elements=" + settings.vendorElements.toHex() + '\n';
    if (!settings.passphrase.isEmpty())
        text += "wpa=2\nwpa_key_mgmt=WPA-PSK\nrsn_pairwise=CCMP\nwpa_passphrase=" +
                settings.passphrase.toLatin1() + '\n';
    return text;
}

QByteArray dnsmasqConfiguration(const SoftApSettings& settings, const SoftApPlace& place)
{
    const auto range = rangeOf(settings);
    const auto mask = textOf(~(~quint32(0) >> settings.prefix));
    QByteArray text = "interface=" + place.interface.toUtf8() + "\nexcept-interface=lo\n";
    text += "bind-dynamic\nno-resolv\nno-hosts\nno-ping\ndhcp-authoritative\npid-file=\n";
    text += "dhcp-leasefile=" + place.directory.toUtf8() + "/leases-" + place.interface.toUtf8();
    text += "\ndhcp-range=" + textOf(range.from) + ',' + textOf(range.to) + ',' + mask + ",10m\n";
    if (!settings.domain.isEmpty())
        text += "address=/" + settings.domain.toLatin1() + '/' + settings.address.toLatin1() + '\n';
    if (place.announcesPage) // RFC 8910
        text += "dhcp-option=114,http://" + settings.address.toLatin1() + "/\n";
    if (place.takesNames)
        text += "address=/#/" + settings.address.toLatin1() + '\n';
    return text;
}

QString hardwareAddressBeside(const QString& mac)
{
    constexpr char local = 0x02;
    constexpr char another = 0x04;
    auto address = QByteArray::fromHex(mac.toLatin1());
    if (!address.isEmpty())
        address[0] = static_cast<char>((address.at(0) | local) ^ another);
    return QString::fromLatin1(address.toHex(':'));
}
