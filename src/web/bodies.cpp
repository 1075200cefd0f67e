// SPDX-License-Identifier: Apache-2.0
#include "bodies.h"

#include "core/orvaplainvalue.h"
#include "network/networkrules.h"

#include <algorithm>

namespace {

constexpr OrvaPlain::Limits bodyLimits = {4, 16 << 10};

using Encryption = OrvaNetworkProfileWirelessEncryption;

OrvaNetworkInterface knownNetwork(const OrvaNetworkProfile& profile, const QString& ssid)
{
    for (const OrvaNetworkInterface& network : profile.wirelessNetworks()) {
        if (network.ssid() == ssid)
            return network;
    }
    OrvaNetworkInterface fresh;
    fresh.setSsid(ssid);
    fresh.setDhcp(true);
    return fresh;
}

/// WPA unless the scan saw something else: an open network that asks for a key is not the one that
/// was meant.
Encryption securityFor(const QString& ssid, const OrvaList<OrvaNetworkScanResult>& seen)
{
    for (const OrvaNetworkScanResult& result : seen) {
        if (result.ssid() == ssid && result.encryption() != Encryption::None)
            return result.encryption();
    }
    return Encryption::WpaPsk;
}

/// The field that is no address; empty where all are.
QString noAddress(const AddressBody& body)
{
    const auto isBad = [](const QString& text) { return orvaIPv4Address(text).isEmpty(); };
    if (isBad(body.ip()))
        return AddressBody::Ip();
    if (isBad(body.netmask()))
        return AddressBody::Netmask();
    if (!body.gateway().isEmpty() && isBad(body.gateway()))
        return AddressBody::Gateway();
    const QStringList servers = body.dns();
    return std::any_of(servers.begin(), servers.end(), isBad) ? AddressBody::Dns() : QString();
}

OrvaNetworkInterface withAddress(OrvaNetworkInterface interface, const AddressBody& body)
{
    for (const QString& field : {OrvaNetworkInterface::Ip(), OrvaNetworkInterface::Netmask(),
                                 OrvaNetworkInterface::Gateway(), OrvaNetworkInterface::Dns()})
        interface.__remove(field);
    interface.setDhcp(body.dhcp());
    if (body.dhcp())
        return interface;
    interface.setIp(orvaIPv4Address(body.ip()));
    interface.setNetmask(orvaIPv4Address(body.netmask()));
    if (!body.gateway().isEmpty())
        interface.setGateway(orvaIPv4Address(body.gateway()));
    interface.setDns(body.dns());
    return interface;
}

} // namespace

CMError malformedBody(const QString& why)
{
    return {QStringLiteral("malformed"), TrString(why)};
}

OrvaResult<QVariantHash> parseFields(const QByteArray& json, const QVector<OrvaField>& fields)
{
    const auto plain = OrvaPlain::fromJson(json, bodyLimits);
    if (!plain)
        return malformedBody(plain.why());
    if (plain->userType() != QMetaType::QVariantHash)
        return malformedBody(QStringLiteral("it is not an object"));
    const QVariantHash hash = plain->toHash();
    QString odd = orvaMalformedField(fields, hash);
    for (auto entry = hash.begin(); entry != hash.end() && odd.isEmpty(); ++entry) {
        if (std::none_of(fields.begin(), fields.end(),
                         [&entry](const OrvaField& field) { return field.key == entry.key(); }))
            odd = entry.key();
    }
    if (odd.isEmpty())
        return hash;
    return malformedBody(QStringLiteral("\"%1\" is not what it should be").arg(odd));
}

OrvaNetworkProfile profileToJoin(const OrvaNetworkProfile& profile, const JoinBody& body,
                                 const OrvaList<OrvaNetworkScanResult>& seen)
{
    OrvaNetworkInterface network = knownNetwork(profile, body.ssid());
    if (!body.key().isEmpty()) {
        network.setKey(body.key());
        network.setEncryption(securityFor(body.ssid(), seen));
    } else if (!network.__contains(OrvaNetworkInterface::Encryption())) {
        network.setEncryption(Encryption::None);
    }
    OrvaNetworkProfile result = profile;
    result.setWireless(network);
    // The host has the others: one that it gave up meanwhile must not come back without its key.
    result.__remove(OrvaNetworkProfile::WirelessNetworks());
    // A person who asks for a wireless network wants it tried.
    if (result.type() == OrvaNetworkProfileType::Wired)
        result.setType(OrvaNetworkProfileType::Auto);
    return result;
}

OrvaResult<OrvaNetworkProfile> profileWithAddress(const OrvaNetworkProfile& profile,
                                                  const AddressBody& body)
{
    const bool isWireless = body.interface() == QLatin1String("wireless");
    if (!isWireless && body.interface() != QLatin1String("wired"))
        return malformedBody(AddressBody::Interface());
    if (isWireless && profile.wireless().ssid().isEmpty())
        return malformedBody(AddressBody::Interface());
    if (const QString field = noAddress(body); !body.dhcp() && !field.isEmpty())
        return malformedBody(field);
    OrvaNetworkProfile result = profile;
    if (isWireless)
        result.setWireless(withAddress(profile.wireless(), body));
    else
        result.setWired(withAddress(profile.wired(), body));
    return result;
}
