// SPDX-License-Identifier: Apache-2.0
#include "parser/livewords.h"

#include "bus/connectalarm.h"
#include "bus/host.h"

#include "core/orvawords.h"
#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace ctl {

namespace {

/// The words that the running host knows.
class Live
{
public:
    Live()
        : m_alarm(m_deadline)
        , m_bus(m_deadline)
        , m_host(m_bus)
    {
    }

    /// A key that is pressed starts nothing: the bus would, where it knows how.
    bool isThere()
    {
        auto ask = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        ask.setArguments({QStringLiteral("org.orva.Host1")});
        const auto answer = m_bus.await<bool>(m_bus.connection().asyncCall(ask));
        return answer && *answer;
    }

    Candidates nodes(const QString& kind)
    {
        Candidates found;
        const auto nodes = m_host.nodes();
        for (const OrvaBusNode& node : nodes ? *nodes : OrvaBusNodes()) {
            if (kind.isEmpty() || node.kind == kind)
                found.append({node.path, node.type});
        }
        return found;
    }

    Candidates known()
    {
        Candidates found;
        const auto profile = m_host.value(OrvaNetworkProfilePath());
        if (!profile)
            return found;
        for (const OrvaNetworkInterface& network : profile->networkProfile().wirelessNetworks())
            found.append({network.ssid(), QStringLiteral("known")});
        return found;
    }

    /// Known networks, and what the last scan saw.
    Candidates networks()
    {
        Candidates found = known();
        const auto rows = m_host.rows(OrvaNetworkScanResultsPath());
        for (const OrvaRoles& row : rows ? *rows : QVector<OrvaRoles>()) {
            const OrvaNetworkScanResult network = row.value().networkScanResult();
            found.append({network.ssid(), QStringLiteral("%1 dBm").arg(network.signal())});
        }
        return found;
    }

    Candidates requesters()
    {
        Candidates found;
        const auto requests = m_host.value(OrvaNetworkSoftApRequestsPath());
        if (!requests)
            return found;
        for (const OrvaNetworkSoftApRequestStatus& request : requests->softApRequests())
            found.append({request.name(), request.interface()});
        return found;
    }

    /// The words that a node's type has.
    Candidates valuesOf(const QString& path)
    {
        const auto node = m_host.node(CMPath(path));
        QStringList words;
        if (node && node->type == OrvaValue::Bool())
            words = QStringList{QStringLiteral("true"), QStringLiteral("false")};
        for (const OrvaField& field : OrvaValue::fields()) {
            if (node && field.key == node->type && field.shape.values)
                words = orvaEnumWords(field.shape.values());
        }
        Candidates found;
        for (const QString& word : words)
            found.append({word, node->type});
        return found;
    }

private:
    QDeadlineTimer m_deadline{2000};
    ConnectAlarm m_alarm;
    Bus m_bus;
    Host m_host;
};

} // namespace

Candidates liveWords(TypeRow::Source source, const QStringList& given)
{
    using Source = TypeRow::Source;
    Live live;
    if (!live.isThere())
        return {};
    switch (source) {
    case Source::None:
    case Source::Files:
        break;
    case Source::ValueNodes:
        return live.nodes(QStringLiteral("value"));
    case Source::ActionNodes:
        return live.nodes(QStringLiteral("activate"));
    case Source::RowsNodes:
        return live.nodes(QStringLiteral("rows"));
    case Source::Nodes:
        return live.nodes({});
    case Source::NodeValues:
        return live.valuesOf(given.value(0));
    case Source::Networks:
        return live.networks();
    case Source::KnownNetworks:
        return live.known();
    case Source::Requesters:
        return live.requesters();
    }
    return {};
}

} // namespace ctl
