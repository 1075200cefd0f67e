// SPDX-License-Identifier: Apache-2.0
#include "world/real/link/dhcpclient.h"

#include "log.h"
#include "world/real/engines/requiredprogram.h"
#include "world/real/engines/savetext.h"

#include <QFile>
#include <QHostAddress>
#include <QThread>

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
    connect(&m_way, &QTimer::timeout, this, &DhcpClient::proceed);
    connect(&m_child, &ChildProcess::failed, this, [this](const QString& why, int pause) {
        m_inherits = true;
        m_way.start(pause);
        if (!m_address.isEmpty() && !m_returned.isActive())
            m_returned.start(m_settings.dhcpDeadline);
        Q_EMIT failed(QStringLiteral("dhcpcd on %1 has ended: %2").arg(m_interface, why));
    });
    connect(&m_child, &ChildProcess::stopped, this, &DhcpClient::proceed);
    connect(&m_returned, &QTimer::timeout, this, [this] {
        forget();
        using Family = EngineTraces::Family;
        m_traces.remove(m_child.isRunning() ? Family::Ipv4 : Family::Both); // it has its IPv6 back
        Q_EMIT abandoned();
    });
}

DhcpClient::~DhcpClient()
{
    m_wanted.reset();
    m_child.end(); // what it leaves can be seen only then
    constexpr int mostWaits = patientWaits + 20;
    for (m_waits = 0; !makeWay() && m_waits < mostWaits; ++m_waits)
        QThread::msleep(shortWait);
    removeLeftOvers();
    m_traces.remove(EngineTraces::Family::Both);
}

void DhcpClient::start(int index, const std::optional<StaticIp>& ip)
{
    if (m_wanted && m_wanted->index == index && m_wanted->ip == ip)
        return;
    m_wanted = Wanted{index, ip};
    restart();
}

void DhcpClient::stop()
{
    if (!m_wanted && (m_child.isEnding() || m_way.isActive()))
        return;
    m_wanted.reset();
    restart();
}

/// A dhcpcd that runs, or is just ending, is ended first.
void DhcpClient::restart()
{
    m_inherits = false;
    ++m_start; // what it tells amid its end is not the next one's
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

/// A dhcpcd that finds another one's process id would only send it its arguments, so the end of one
/// is waited for.
void DhcpClient::proceed()
{
    if (!makeWay())
        return m_way.start(++m_waits > patientWaits ? longWait : shortWait);
    m_waits = 0;
    removeLeftOvers();
    if (!m_inherits)
        m_traces.remove(EngineTraces::Family::Both);
    if (m_wanted)
        launch();
    else
        Q_EMIT stopped();
}

void DhcpClient::launch()
{
    if (!hasProgram() || !m_traces.begin(m_wanted->index) || !writeConfiguration())
        return m_way.start(longWait);
    if (m_wanted->ip)
        m_traces.know(m_wanted->ip->address);
    m_child.start(m_settings.dhcpcd, arguments());
}

/// False where the program is not there, which is said once.
bool DhcpClient::hasProgram()
{
    const auto found = requireProgram("Addresses need", m_settings.dhcpcd, "dhcpcd-base");
    if (!std::exchange(m_missing, !found) && !found)
        Q_EMIT failed(found.why());
    return found.isOk();
}

bool DhcpClient::makeWay()
{
    const int pid = engine();
    const bool ours = QFile::exists(m_configuration);
    if (pid == 0 || (!ours && !m_wanted))
        return true;
    if (ours)
        ::kill(pid, m_waits < patientWaits ? SIGTERM : SIGKILL);
    else if (m_waits == patientWaits)
        Q_EMIT failed(QStringLiteral("Another dhcpcd, process %1, holds %2, waiting for its end")
                          .arg(pid)
                          .arg(m_interface));
    return false;
}

int DhcpClient::engine() const
{
    const auto pid = contentOf(dhcpcdDirectory + m_interface + QStringLiteral(".pid")).toInt();
    const bool runs =
        pid > 0 && contentOf(QStringLiteral("/proc/%1/comm").arg(pid)) == "dhcpcd" &&
        !contentOf(QStringLiteral("/proc/%1/cmdline").arg(pid)).isEmpty(); // a zombie's
    return runs ? pid : 0;
}

void DhcpClient::removeLeftOvers()
{
    QFile::remove(m_configuration);
    if (engine() != 0)
        return;
    m_child.killOrphans();
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
    if (event.source == DhcpEvent::Source::Other)
        return;
    if (event.source == DhcpEvent::Source::Dhcp) {
        m_returned.stop();
        m_address = event.address;
        m_traces.know(m_address);
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
            if (QHostAddress address(text); !address.isNull()) {
                address.setScopeId({}); // it is reached through this interface
                servers.append(address.toString());
            }
    for (const auto& some : m_servers)
        servers += some;
    servers.removeDuplicates();
    return servers;
}
