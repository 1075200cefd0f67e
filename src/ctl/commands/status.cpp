// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "context.h"
#include "output/names.h"

#include "common/hostnodes.h"
#include "network/networkpaths.h"

namespace ctl {

namespace {

using Style = Output::Style;

/// The nodes that the page is made of.
struct Picture
{
    OrvaNetworkInfo info;
    OrvaNetworkProfile profile;
    QString url;
    QStringList stations;
    QString settingsFault;
    OrvaNetworkOnline online;
    OrvaNetworkLastJoin lastJoin;
    OrvaNetworkPendingProfile pending;
};

QString stateText(OrvaNetworkState state, OrvaNetworkConnectingStatus connecting)
{
    switch (state) {
    case OrvaNetworkState::Connected:
        return Output::styled(QStringLiteral("connected"), Style::Good);
    case OrvaNetworkState::Disconnecting:
        return QStringLiteral("disconnecting");
    case OrvaNetworkState::Disconnected:
        break;
    }
    switch (connecting) {
    case OrvaNetworkConnectingStatus::Connecting:
        return QStringLiteral("connecting");
    case OrvaNetworkConnectingStatus::AuthenticationFailed:
        return Output::styled(QStringLiteral("key refused"), Style::Bad);
    case OrvaNetworkConnectingStatus::Idle:
        break;
    }
    return Output::styled(QStringLiteral("not connected"), Style::Dim);
}

/// The state of the network as a whole, derived from those of its interfaces.
QString headline(const OrvaNetworkInfo& info)
{
    if (info.wired().state() == OrvaNetworkState::Connected)
        return Output::styled(QStringLiteral("connected by wire"), Style::Good);
    if (info.wireless().state() == OrvaNetworkState::Connected)
        return Output::styled(
            QStringLiteral("connected to \"%1\"").arg(printable(info.wireless().ssid())),
            Style::Good);
    if (info.wired().connectingStatus() == OrvaNetworkConnectingStatus::Connecting)
        return stateText(info.state(), OrvaNetworkConnectingStatus::Connecting);
    return stateText(info.state(), info.wireless().connectingStatus());
}

/// A page in the making: a name on the left, what there is to say on the right.
class Page
{
public:
    explicit Page(const Output& out)
        : m_out(out)
    {
    }

    void add(const QString& name, const QString& text) const
    {
        if (!text.isEmpty())
            m_out.line(Output::styled(name.leftJustified(14), Style::Bold) + text);
    }
    void addMore(const QString& text) const
    {
        if (!text.isEmpty())
            m_out.line(QString(14, QLatin1Char(' ')) + text);
    }

private:
    const Output& m_out;
};

void addWired(const Page& page, const OrvaNetworkWiredInterface& wired)
{
    const QString cable =
        wired.cableConnected() ? QStringLiteral("cable plugged in") : QStringLiteral("no cable");
    page.add(QStringLiteral("Wired"),
             QStringList{printable(wired.name()),
                         stateText(wired.state(), wired.connectingStatus()), cable}
                 .join(QStringLiteral(", ")));
    page.addMore(printable(wired.mac()));
    page.addMore(addressesText(wired.addresses()));
}

QString linkText(const OrvaNetworkWirelessInterface& wireless)
{
    QStringList parts;
    if (wireless.state() == OrvaNetworkState::Disconnected || wireless.ssid().isEmpty())
        return {};
    parts << QStringLiteral("\"%1\"").arg(printable(wireless.ssid()))
          << securityName(wireless.encryption());
    if (wireless.channel() > 0)
        parts << QStringLiteral("channel %1").arg(wireless.channel());
    if (wireless.frequency() > 0)
        parts << bandName(wireless.frequency());
    if (wireless.signalLevel() != 0)
        parts << QStringLiteral("%1 dBm").arg(wireless.signalLevel());
    return parts.join(QStringLiteral(", "));
}

QString wpsText(const OrvaNetworkWps& wps)
{
    switch (wps.status()) {
    case OrvaNetworkWpsStatus::None:
        return {};
    case OrvaNetworkWpsStatus::InProgress:
        return QStringLiteral("WPS in progress");
    case OrvaNetworkWpsStatus::Succeeded:
        return QStringLiteral("WPS succeeded");
    case OrvaNetworkWpsStatus::Failed:
        return QStringLiteral("WPS failed: %1").arg(printable(wps.lastError()));
    }
    return {};
}

void addWireless(const Page& page, const OrvaNetworkWirelessInterface& wireless)
{
    page.add(
        QStringLiteral("Wireless"),
        QStringLiteral("%1, %2").arg(printable(wireless.name()),
                                     stateText(wireless.state(), wireless.connectingStatus())));
    page.addMore(linkText(wireless));
    page.addMore(printable(wireless.mac()));
    page.addMore(addressesText(wireless.addresses()));
    page.addMore(wpsText(wireless.wps()));
}

void addSoftAp(const Page& page, const Picture& picture)
{
    const OrvaNetworkSoftApInterface softAp = picture.info.softAp();
    page.add(QStringLiteral("Soft AP"),
             softAp.state() == OrvaNetworkState::Connected
                 ? QStringLiteral("running, stations: %1").arg(picture.stations.size())
                 : Output::styled(QStringLiteral("off"), Style::Dim));
    for (const OrvaNetworkSoftAp& ap : softAp.aps())
        page.addMore(printable(ap.name()) + QLatin1Char(' ') + addressesText(ap.addresses()));
}

void addKnown(const Page& page, const OrvaNetworkProfile& profile)
{
    QStringList names;
    for (const OrvaNetworkInterface& network : profile.wirelessNetworks())
        names.append(QLatin1Char('"') + printable(network.ssid()) + QLatin1Char('"'));
    page.add(QStringLiteral("Known"), names.join(QStringLiteral(", ")));
}

QString onlineText(OrvaNetworkOnline online)
{
    switch (online) {
    case OrvaNetworkOnline::Unknown:
        break;
    case OrvaNetworkOnline::NoGateway:
        return QStringLiteral("no, without a gateway");
    case OrvaNetworkOnline::Gateway:
        return QStringLiteral("as far as the gateway");
    case OrvaNetworkOnline::Portal:
        return Output::styled(QStringLiteral("no, a portal answers"), Style::Bad);
    case OrvaNetworkOnline::Online:
        return Output::styled(QStringLiteral("yes"), Style::Good);
    }
    return {};
}

void addLastJoin(const Page& page, const OrvaNetworkLastJoin& join)
{
    if (join.result() == OrvaNetworkJoinResult::Failed)
        page.add(
            QStringLiteral("Last join"),
            QStringLiteral("\"%1\" was not joined, %2: %3")
                .arg(printable(join.ssid()), agoText(join.whenMs()), reasonText(join.reason())));
}

void addPending(const Page& page, const OrvaNetworkPendingProfile& pending)
{
    if (pending.untilMs() > 0)
        page.add(QStringLiteral("On trial"),
                 QStringLiteral("the profile before comes back %1; \"orvactl profile confirm\" "
                                "keeps this one")
                     .arg(untilText(pending.untilMs())));
}

void showPage(const Output& out, const Picture& picture)
{
    const Page page(out);
    const OrvaNetworkInfo& info = picture.info;
    page.add(QStringLiteral("Network"), headline(info));
    if (info.state() == OrvaNetworkState::Connected)
        page.add(QStringLiteral("Online"), onlineText(picture.online));
    page.add(QStringLiteral("Web page"), printable(picture.url));
    addWired(page, info.wired());
    addWireless(page, info.wireless());
    addLastJoin(page, picture.lastJoin);
    addSoftAp(page, picture);
    page.add(QStringLiteral("Gateways"), addressesText(info.gateways()));
    page.add(QStringLiteral("Name servers"), addressesText(info.dns()));
    addKnown(page, picture.profile);
    addPending(page, picture.pending);
    if (info.airplaneMode())
        page.add(QStringLiteral("Airplane mode"), QStringLiteral("on"));
    if (!picture.settingsFault.isEmpty())
        page.add(
            QStringLiteral("Settings"),
            Output::styled(QStringLiteral("not stored: %1").arg(printable(picture.settingsFault)),
                           Style::Bad));
}

Result status(Context& context, const Arguments&)
{
    QVariantHash document;
    QHash<CMPath, OrvaValue> values;
    for (const CMPath& path :
         {OrvaNetworkInfoPath(), OrvaNetworkProfilePath(), OrvaNetworkLocalWebserverUrlPath(),
          OrvaNetworkConnectedSoftApStationsPath(), HostSettingsFaultPath(),
          OrvaNetworkStateOnlinePath(), OrvaNetworkLastJoinPath(),
          OrvaNetworkPendingProfilePath()}) {
        const auto value = context.host.value(path);
        if (!value)
            return value.error();
        values.insert(path, *value);
        document.insert(path.toString(), value->__hash());
    }
    context.out.document(document);
    showPage(context.out, {values.value(OrvaNetworkInfoPath()).networkInfo(),
                           values.value(OrvaNetworkProfilePath()).networkProfile(),
                           values.value(OrvaNetworkLocalWebserverUrlPath()).string_(),
                           values.value(OrvaNetworkConnectedSoftApStationsPath()).stringList(),
                           values.value(HostSettingsFaultPath()).string_(),
                           values.value(OrvaNetworkStateOnlinePath()).networkOnline(),
                           values.value(OrvaNetworkLastJoinPath()).networkLastJoin(),
                           values.value(OrvaNetworkPendingProfilePath()).networkPendingProfile()});
    return {};
}

} // namespace

Commands statusCommands()
{
    return {{"status", "Shows how the network stands, on a page", {}, &status}};
}

} // namespace ctl
