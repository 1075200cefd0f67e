// SPDX-License-Identifier: Apache-2.0
#include "picture/networkinforules.h"

#include "networkinglog.h"

#include <algorithm>

namespace {

/// `target` with the fields named, as `source` has them, their absence included.
template <class Record>
Record withFields(const Record& target, const Record& source, const QStringList& fields)
{
    QVariantHash hash = target.__hash();
    for (const QString& field : fields) {
        if (source.__contains(field))
            hash.insert(field, source.__hash().value(field));
        else
            hash.remove(field);
    }
    return Record(hash);
}

bool isUp(OrvaNetworkState state)
{
    return state != OrvaNetworkState::Disconnected;
}

} // namespace

OrvaNetworkInfo firstInfo(const NamedInterface& wired, const NamedInterface& wireless, bool cable,
                          bool airplaneMode)
{
    const auto introduce = [](auto& record, const NamedInterface& interface) {
        record.setName(interface.name);
        record.setMac(interface.mac);
        record.setState(OrvaNetworkState::Disconnected);
    };
    OrvaNetworkInfo info;
    info.setState(OrvaNetworkState::Disconnected);
    info.editWired([&](auto& record) {
        introduce(record, wired);
        record.setCableConnected(cable);
    });
    info.editWireless([&](auto& record) { introduce(record, wireless); });
    info.editSoftAp([](auto& softAp) {
        softAp.setName(QStringLiteral("softap"));
        softAp.setState(OrvaNetworkState::Disconnected);
    });
    info.setAirplaneMode(airplaneMode);
    return withoutWpsSession(info);
}

OrvaNetworkState calculateNetworkInfoState(const OrvaNetworkInfo& info)
{
    const OrvaNetworkState wired = info.wired().state();
    const OrvaNetworkState wireless = info.wireless().state();
    if (wired == OrvaNetworkState::Connected || wireless == OrvaNetworkState::Connected)
        return OrvaNetworkState::Connected;
    return isUp(wired) || isUp(wireless) ? OrvaNetworkState::Disconnecting
                                         : OrvaNetworkState::Disconnected;
}

OrvaNetworkInfo withInterfaceState(OrvaNetworkInfo info, const QString& interface,
                                   OrvaNetworkState state)
{
    const auto set = [state](auto& record) { record.setState(state); };
    if (interface == info.wired().name())
        info.editWired(set);
    else if (interface == info.wireless().name())
        info.editWireless(set);
    return info;
}

QStringList interfacesIn(const OrvaNetworkInfo& info, OrvaNetworkState state)
{
    QStringList names;
    if (info.wired().state() == state)
        names << info.wired().name();
    if (info.wireless().state() == state)
        names << info.wireless().name();
    return names;
}

OrvaNetworkInfo withoutWpsSession(OrvaNetworkInfo info)
{
    info.editWireless([](auto& wireless) {
        wireless.editWps([](auto& wps) { wps.setStatus(OrvaNetworkWpsStatus::None); });
    });
    return info;
}

OrvaNetworkInfo withConnectingStatus(OrvaNetworkInfo info, bool linkUp, Configured configured)
{
    using Status = OrvaNetworkConnectingStatus;
    info.editWired([&](auto& wired) {
        if (linkUp)
            wired.setConnectingStatus(Status::Idle);
        else if (wired.cableConnected() && configured.wired)
            wired.setConnectingStatus(Status::Connecting);
    });
    info.editWireless([&](auto& wireless) {
        if (linkUp)
            wireless.setConnectingStatus(Status::Idle);
        else if (configured.wireless)
            wireless.setConnectingStatus(Status::Connecting);
    });
    const bool idle = info.wireless().connectingStatus() == Status::Idle;
    return idle ? withoutWpsSession(info) : info;
}

OrvaNetworkInfo withUnconfiguredIdle(OrvaNetworkInfo info, Configured configured)
{
    const auto idle = [](auto& interface) {
        interface.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
    };
    if (!configured.wired)
        info.editWired(idle);
    if (!configured.wireless)
        info.editWireless(idle);
    return info;
}

OrvaNetworkInfo withCable(OrvaNetworkInfo info, bool connected, Configured configured)
{
    const bool connects = info.state() == OrvaNetworkState::Disconnected && configured.wired;
    info.editWired([&](auto& wired) {
        wired.setCableConnected(connected);
        if (!connected)
            wired.setConnectingStatus(OrvaNetworkConnectingStatus::Idle);
        else if (connects)
            wired.setConnectingStatus(OrvaNetworkConnectingStatus::Connecting);
    });
    return info;
}

OrvaNetworkInfo updateCredentialsSuspect(OrvaNetworkInfo info, const QString& ssid, bool suspect)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (info.wireless().ssid() == ssid)
        info.editWireless([&](auto& wireless) { wireless.setCredentialsSuspect(suspect); });
    auto networks = info.wirelessNetworks();
    const auto found = std::find_if(
        networks.begin(), networks.end(),
        [&](const OrvaNetworkWirelessInterface& network) { return network.ssid() == ssid; });
    if (found != networks.end()) {
        LOG4CPLUS_DEBUG(networkingLogger(),
                        "Found ssid: " << ssid << " updating credentialsSuspect to: " << suspect);
        found->setCredentialsSuspect(suspect);
        info.setWirelessNetworks(networks);
    }
    return info;
}

OrvaNetworkInfo withWorkerFields(OrvaNetworkInfo snapshot, const OrvaNetworkInfo& published)
{
    using Wired = OrvaNetworkWiredInterface;
    using Wireless = OrvaNetworkWirelessInterface;
    using SoftAps = OrvaNetworkSoftApInterface;
    snapshot.setWired(withFields(
        snapshot.wired(), published.wired(),
        {Wired::State(), Wired::Name(), Wired::CableConnected(), Wired::ConnectingStatus()}));
    snapshot.setWireless(withFields(
        snapshot.wireless(), published.wireless(),
        {Wireless::State(), Wireless::Name(), Wireless::ConnectingStatus(), Wireless::Wps()}));
    snapshot.setSoftAp(
        withFields(snapshot.softAp(), published.softAp(), {SoftAps::State(), SoftAps::Name()}));
    return withFields(snapshot, published,
                      {OrvaNetworkInfo::State(), OrvaNetworkInfo::WirelessNetworks()});
}

OrvaNetworkInfo shuttingDown(OrvaNetworkInfo info)
{
    const auto leave = [](auto& interface) {
        if (interface.state() == OrvaNetworkState::Connected)
            interface.setState(OrvaNetworkState::Disconnecting);
    };
    info.editWired(leave);
    info.editWireless(leave);
    info.editSoftAp(leave);
    info.__remove(OrvaNetworkInfo::WirelessNetworks());
    return info;
}

OrvaNetworkInfo shutdownCancelled(OrvaNetworkInfo info, const QStringList& marked)
{
    const auto comeBack = [&](auto& interface) {
        if (interface.state() == OrvaNetworkState::Disconnecting &&
            marked.contains(interface.name()))
            interface.setState(OrvaNetworkState::Connected);
    };
    info.editWired(comeBack);
    info.editWireless(comeBack);
    return info;
}

OrvaList<OrvaNetworkWirelessInterface> knownNetworks(const OrvaNetworkProfile& profile)
{
    OrvaList<OrvaNetworkWirelessInterface> list;
    const auto networks = profile.wirelessNetworks();
    list.reserve(networks.size());
    for (const OrvaNetworkInterface& network : networks) {
        OrvaNetworkWirelessInterface known;
        known.setSsid(network.ssid());
        list.append(known);
    }
    return list;
}
