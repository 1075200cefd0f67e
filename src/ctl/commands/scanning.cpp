// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "commands/profileedit.h"
#include "output/names.h"

#include <algorithm>

namespace ctl {

namespace {

/// "*" for the network that is connected, "+" for a known one.
QString markOf(const QString& ssid, const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile)
{
    if (info.wireless().state() == OrvaNetworkState::Connected && info.wireless().ssid() == ssid)
        return QStringLiteral("*");
    const auto networks = profile.wirelessNetworks();
    const bool known =
        std::any_of(networks.begin(), networks.end(), [&ssid](const OrvaNetworkInterface& network) {
            return network.ssid() == ssid;
        });
    return known ? QStringLiteral("+") : QString();
}

QStringList tableRow(const QString& mark, const OrvaNetworkScanResult& network)
{
    return {mark,
            printableName(network.ssid()),
            securityName(network),
            network.channel() > 0 ? QString::number(network.channel()) : QString(),
            bandName(network.frequency()),
            QStringLiteral("%1 dBm").arg(network.signal())};
}

void append(const QVector<OrvaRoles>& rows, OrvaList<OrvaNetworkScanResult>& networks)
{
    for (const OrvaRoles& row : rows)
        networks.append(row.value().networkScanResult());
}

/// Those beside them that the device cannot join, too.
Result showNetworks(Context& context, OrvaList<OrvaNetworkScanResult> networks)
{
    if (const auto others = context.host.rows(OrvaNetworkUnsupportedNetworksPath()))
        append(*others, networks);
    std::stable_sort(networks.begin(), networks.end(),
                     [](const OrvaNetworkScanResult& one, const OrvaNetworkScanResult& other) {
                         return one.signal() > other.signal();
                     });
    const auto info = context.host.value(OrvaNetworkInfoPath());
    if (!info)
        return info.error();
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.error();
    QVector<QStringList> table;
    for (const OrvaNetworkScanResult& network : std::as_const(networks)) {
        context.out.document({{OrvaValue::NetworkScanResult(), network.__variant()}});
        table.append(tableRow(markOf(network.ssid(), info->networkInfo(), *profile), network));
    }
    context.out.table(context.columns, table);
    return {};
}

/// What the radio does that a scan must wait for; empty for nothing.
QString hindranceOf(Host& host)
{
    const auto info = host.value(OrvaNetworkInfoPath());
    const auto wireless = info ? info->networkInfo().wireless() : OrvaNetworkWirelessInterface();
    if (wireless.wps().status() == OrvaNetworkWpsStatus::InProgress)
        return QStringLiteral("A WPS session runs; the scan waits for its end.");
    if (wireless.connectingStatus() == OrvaNetworkConnectingStatus::Connecting)
        return QStringLiteral("A network is being joined; the scan waits for that.");
    return {};
}

Result scan(Context& context, const Arguments&)
{
    const QString hindrance = hindranceOf(context.host);
    if (Output::stderrIsTerminal())
        context.out.note(hindrance.isEmpty() ? QStringLiteral("Scanning…") : hindrance);
    const auto answer = context.host.invoke(OrvaNetworkScanPath(), {}, scanPatience);
    if (answer)
        return showNetworks(context, answer->networkScanResults());
    const auto status = answer.error().status;
    const bool hadToWait = status == ExitStatus::TimedOut || status == ExitStatus::Failed;
    if (hadToWait && !hindrance.isEmpty())
        return Failure{ExitStatus::Busy, hindrance};
    return answer.error();
}

Result list(Context& context, const Arguments&)
{
    const auto rows = context.host.rows(OrvaNetworkScanResultsPath());
    if (!rows)
        return rows.error();
    OrvaList<OrvaNetworkScanResult> networks;
    append(*rows, networks);
    return showNetworks(context, networks);
}

} // namespace

Commands scanCommands()
{
    const std::vector<std::string> columns = {"USED",    "SSID", "SECURITY",
                                              "CHANNEL", "BAND", "SIGNAL"};
    return {
        Command{"wifi scan",
                "Scans and lists what it found; * is connected, + is known",
                {{"--wait", "Wait at most SECONDS for the results", Parameter::Kind::Time}},
                &scan}
            .writing(columns),
        Command{"wifi list", "Lists what the last scan found", {}, &list}.writing(columns),
    };
}

} // namespace ctl
