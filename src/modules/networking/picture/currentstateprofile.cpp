// SPDX-License-Identifier: Apache-2.0
#include "picture/currentstateprofile.h"

#include "network/networkrules.h"

namespace {

bool isIPv4(const OrvaNetworkAddress& address)
{
    return address.protocol() == OrvaNetworkAddressProtocol::IPv4;
}

QStringList ipv4Texts(const OrvaList<OrvaNetworkAddress>& addresses)
{
    QStringList texts;
    for (const OrvaNetworkAddress& address : addresses) {
        if (isIPv4(address))
            texts << address.ip();
    }
    return texts;
}

/// The fields that both interfaces have in the form of a profile.
OrvaNetworkInterface interfaceProfile(const OrvaNetworkInfo& info, OrvaNetworkState state,
                                      const OrvaList<OrvaNetworkAddress>& addresses)
{
    OrvaNetworkInterface interface;
    interface.setConnected(state != OrvaNetworkState::Disconnected);
    if (!addresses.isEmpty() && isIPv4(addresses.first())) {
        interface.setDhcp(addresses.first().dhcp());
        interface.setIp(addresses.first().ip());
        interface.setNetmask(orvaPrefixToNetmask(addresses.first().prefix()));
    }
    interface.setDns(ipv4Texts(info.dns()));
    interface.setGateway(ipv4Texts(info.gateways()).value(0));
    return interface;
}

OrvaNetworkInterface wirelessProfile(const OrvaNetworkInfo& info)
{
    const OrvaNetworkWirelessInterface wireless = info.wireless();
    OrvaNetworkInterface interface = interfaceProfile(info, wireless.state(), wireless.addresses());
    interface.setSsid(wireless.ssid());
    interface.setBssid(wireless.bssid().toUpper());
    interface.setEncryption(wireless.encryption());
    interface.setFrequency(wireless.frequency());
    interface.setSignalLevel(wireless.signalLevel());
    return interface;
}

OrvaList<OrvaNetworkProfileSoftApSettings> softApProfiles(const OrvaNetworkInfo& info)
{
    OrvaList<OrvaNetworkProfileSoftApSettings> list;
    const auto aps = info.softAp().aps();
    for (const OrvaNetworkSoftAp& ap : aps) {
        const auto addresses = ap.addresses();
        if (addresses.isEmpty())
            continue;
        OrvaNetworkProfileSoftApSettings settings(ap);
        settings.setApAddress(addresses.first().ip());
        settings.setApNetmask(orvaPrefixToNetmask(addresses.first().prefix()));
        list.append(settings);
    }
    return list;
}

} // namespace

OrvaNetworkProfile currentStateProfile(const OrvaNetworkInfo& info)
{
    OrvaNetworkProfile profile;
    if (info.wired().state() != OrvaNetworkState::Disconnected)
        profile.setWired(interfaceProfile(info, info.wired().state(), info.wired().addresses()));
    const auto softAps = softApProfiles(info);
    if (!softAps.isEmpty())
        profile.setSoftApSettings(softAps);
    if (info.wireless().state() != OrvaNetworkState::Disconnected)
        profile.setWireless(wirelessProfile(info));
    return profile;
}
