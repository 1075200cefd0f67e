// SPDX-License-Identifier: Apache-2.0
#include "picture/webserverurl.h"

#include <optional>

namespace {

/// The host by which a connected interface is reached; nothing where it has no address.
std::optional<QString> hostOf(OrvaNetworkState state, const OrvaList<OrvaNetworkAddress>& addresses)
{
    if (state != OrvaNetworkState::Connected || addresses.isEmpty())
        return std::nullopt;
    return addresses.first().ip();
}

QString webserverHost(const OrvaNetworkInfo& info)
{
    if (const auto host = hostOf(info.wired().state(), info.wired().addresses()))
        return *host;
    if (const auto host = hostOf(info.wireless().state(), info.wireless().addresses()))
        return *host;
    const auto aps = info.softAp().aps();
    const auto addresses = aps.isEmpty() ? OrvaList<OrvaNetworkAddress>() : aps.first().addresses();
    return hostOf(info.softAp().state(), addresses).value_or(QString());
}

} // namespace

QString webserverUrl(const OrvaNetworkInfo& info, const QString& portSuffix)
{
    const QString host = webserverHost(info);
    if (host.isEmpty())
        return QString();
    const bool isIPv6 = host.contains(QLatin1Char(':'));
    return QStringLiteral("http://") +
           (isIPv6 ? QLatin1Char('[') + host + QLatin1Char(']') : host) + portSuffix +
           QLatin1Char('/');
}

QString webserverPortSuffix(qint32 port)
{
    return port > 0 ? QLatin1Char(':') + QString::number(port) : QString();
}
