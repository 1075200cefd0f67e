// SPDX-License-Identifier: Apache-2.0
#include "world/real/dhcpclient.h"

#include "log.h"
#include "world/real/savetext.h"

#include <QFile>
#include <QHostAddress>

#include <csignal>

namespace {

const QString dhcpcdDirectory = QStringLiteral("/run/dhcpcd/");

constexpr int patientWaits = 100; ///< for one that is just ending: 5 s
constexpr int shortWait = 50;     // ms
constexpr int longWait = 5000;    // ms

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

bool isIpv4(const QString& text)
{
    return QHostAddress(text).protocol() == QAbstractSocket::IPv4Protocol;
}

} // namespace

DhcpClient::DhcpClient(QString interface, int metric, const RealSettings& settings)
    : m_interface(std::move(interface))
    , m_metric(metric)
    , m_settings(settings)
    , m_configuration(
          QStringLiteral("%1/dhcpcd-%2.conf").arg(settings.runtimeDirectory, m_interface))
    , m_child(settings.helperDirectory + QStringLiteral("/lumod-keep"),
              QStringLiteral("dhcpcd on ") + m_interface)
{
    m_way.setSingleShot(true);
    m_returned.setSingleShot(true);
    connect(&m_way, &QTimer::timeout, this, &DhcpClient::launch);
    connect(&m_child, &ChildProcess::failed, this, [this](const QString& why, int pause) {
        m_way.start(pause);
        if (!m_address.isEmpty() && !m_returned.isActive())
            m_returned.start(m_settings.dhcpDeadline);
        Q_EMIT failed(QStringLiteral("dhcpcd on %1 has ended: %2").arg(m_interface, why));
    });
    connect(&m_child, &ChildProcess::stopped, this, [this] {
        removeLeftOvers();
        if (m_wanted)
            return launch();
        Q_EMIT stopped();
    });
    connect(&m_returned, &QTimer::timeout, this, [this] {
        forget();
        Q_EMIT abandoned();
    });
}

DhcpClient::~DhcpClient()
{
    m_child.end(); // what it leaves can be seen only then
    removeLeftOvers();
}

void DhcpClient::start(int index, const std::optional<StaticIp>& ip)
{
    if (m_wanted && m_wanted->index == index && m_wanted->ip == ip)
        return;
    const bool idle = !m_wanted && !m_child.isRunning();
    m_wanted = Wanted{index, ip};
    forget();
    if (idle)
        return launch();
    m_way.stop();
    m_child.stop();
}

void DhcpClient::stop()
{
    m_wanted.reset();
    m_way.stop();
    forget();
    m_child.stop();
}

void DhcpClient::forget()
{
    m_returned.stop();
    m_address.clear();
    m_domain.clear();
    m_servers.clear();
}

void DhcpClient::launch()
{
    if (!makeWay())
        return m_way.start(++m_waits > patientWaits ? longWait : shortWait);
    m_waits = 0;
    if (!writeConfiguration())
        return m_way.start(longWait);
    m_child.start(m_settings.dhcpcd, arguments());
}

/// A dhcpcd that finds another one's process id would only send it its arguments. One that ends is
/// waited for; what one that was killed has left is removed.
bool DhcpClient::makeWay()
{
    if (const auto pid = engine(); !pid.isEmpty()) {
        if (pid.toInt() == m_engine)
            ::kill(m_engine, SIGTERM); // lumod-keep was killed, and could not do it
        if (m_waits == patientWaits)
            Q_EMIT failed(
                QStringLiteral("Another dhcpcd, process %1, holds %2, waiting for its end")
                    .arg(pid, m_interface));
        return false;
    }
    removeLeftOvers();
    return true;
}

QString DhcpClient::engine() const
{
    const auto pid =
        QString::fromLatin1(contentOf(dhcpcdDirectory + m_interface + QStringLiteral(".pid")));
    const bool runs =
        !pid.isEmpty() && contentOf(QStringLiteral("/proc/%1/comm").arg(pid)) == "dhcpcd";
    return runs ? pid : QString();
}

void DhcpClient::removeLeftOvers()
{
    QFile::remove(m_configuration);
    if (!engine().isEmpty())
        return;
    for (const auto* left : {".pid", ".sock", ".unpriv.sock"})
        QFile::remove(dhcpcdDirectory + m_interface + QLatin1String(left));
}

bool DhcpClient::writeConfiguration()
{
    const auto text =
        QStringLiteral("option domain_name_servers, domain_name, routers, interface_mtu, "
                       "classless_static_routes\n"
                       "option dhcp_server_identifier\n"
                       "require dhcp_server_identifier\n"
                       "clientid\nslaac hwaddr\nnodelay\nnoipv4ll\n%1"
                       "metric %2\n"
                       "env LUMOD_EVENTS=%3/events\n"
                       "env LUMOD_START=%4\n")
            .arg(m_settings.probeAddresses ? QString() : QStringLiteral("noarp\n"))
            .arg(m_metric)
            .arg(m_settings.runtimeDirectory)
            .arg(++m_start);
    const auto saved = saveText(m_configuration, text.toUtf8());
    if (!saved)
        Q_EMIT failed(QStringLiteral("Cannot write ") + saved.why());
    return saved.isOk();
}

QStringList DhcpClient::arguments() const
{
    QStringList words{QStringLiteral("-B"), QStringLiteral("-f"), m_configuration,
                      QStringLiteral("-c"),
                      m_settings.helperDirectory + QStringLiteral("/dhcp-event")};
    const auto& ip = m_wanted->ip;
    if (ip)
        words << QStringLiteral("-S")
              << QStringLiteral("ip_address=%1/%2").arg(ip->address).arg(ip->prefix);
    if (ip && isIpv4(ip->gateway))
        words << QStringLiteral("-S") << QStringLiteral("routers=") + ip->gateway;
    return words << m_interface;
}

void DhcpClient::take(const DhcpEvent& event)
{
    if (!m_wanted || event.interface != m_interface || event.start != m_start)
        return;
    m_engine = event.process;
    if (event.source == DhcpEvent::Source::Other)
        return;
    if (event.source == DhcpEvent::Source::Dhcp) {
        m_returned.stop();
        m_address = event.address;
        m_domain = event.domain;
    }
    m_servers[event.source] = event.servers;
    Q_EMIT changed();
}

QStringList DhcpClient::servers() const
{
    QStringList servers;
    if (m_wanted && m_wanted->ip) // which dhcpcd need not know
        for (const auto& text : m_wanted->ip->dns)
            if (const QHostAddress address(text); !address.isNull())
                servers.append(address.toString());
    for (const auto& some : m_servers)
        servers += some;
    servers.removeDuplicates();
    return servers;
}
