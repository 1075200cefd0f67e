// SPDX-License-Identifier: Apache-2.0
#include "world/real/link/nameservers.h"

#include "log.h"
#include "world/real/engines/savetext.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>

namespace {

constexpr int programLimit = 5000;        // ms
constexpr int rewriteMilliseconds = 5000; // of a file that could not be written
const QByteArray header = QByteArrayLiteral("# Written by lumod; changes are lost.\n");

QString spelled(const QString& server, const QString& interface)
{
    return isLinkLocal(server) ? server + QLatin1Char('%') + interface : server;
}

QByteArray linesOf(const QString& interface, const NameServers::Uplink& uplink)
{
    QByteArray text;
    if (!uplink.domain.isEmpty())
        text += "search " + uplink.domain.toUtf8() + '\n';
    for (const auto& server : uplink.servers)
        text += "nameserver " + spelled(server, interface).toUtf8() + '\n';
    return text;
}

bool isForeign(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && file.size() > 0 && file.read(header.size()) != header;
}

} // namespace

bool isLinkLocal(const QString& server)
{
    constexpr int prefix = 10;
    return QHostAddress(server).isInSubnet(QHostAddress(QStringLiteral("fe80::")), prefix);
}

bool NameServers::Uplink::operator==(const Uplink& other) const
{
    return metric == other.metric && servers == other.servers && domain == other.domain;
}

NameServers::NameServers(const RealSettings& settings)
    : m_settings(settings)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &NameServers::writeFile);
    m_limit.setSingleShot(true);
    connect(&m_limit, &QTimer::timeout, &m_program, &QProcess::kill);
    connect(&m_program, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int code) {
                if (code == 0)
                    return finish({});
                finish(Failure{QStringLiteral("%1: exit status %2 %3")
                                   .arg(m_settings.resolvconf)
                                   .arg(code)
                                   .arg(QString::fromUtf8(m_program.readAll()).trimmed())});
            });
    connect(&m_program, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish(Failure{m_settings.resolvconf + QStringLiteral(": ") + m_program.errorString()});
    });
    m_program.setProcessChannelMode(QProcess::MergedChannels);
}

NameServers::~NameServers()
{
    m_program.disconnect(this);
    awaitProgram();
    auto interfaces = usesProgram() ? m_uplinks.keys() + m_dirty : QStringList();
    interfaces.removeDuplicates();
    m_uplinks.clear();
    for (const auto& interface : std::as_const(interfaces)) {
        m_program.start(m_settings.resolvconf, programArguments(interface));
        awaitProgram();
    }
    const bool ours = !usesProgram() && !isForeign(m_settings.resolvConf);
    const QString file = QFileInfo(m_settings.resolvConf).canonicalFilePath(); // never the link
    if (m_settings.nameServers != RealSettings::NameServerOwner::Nobody && ours && !file.isEmpty())
        QFile::remove(file);
}

/// Some seconds at most, and it does not run any more.
void NameServers::awaitProgram()
{
    if (m_program.waitForFinished(programLimit))
        return;
    m_program.kill();
    m_program.waitForFinished(programLimit);
}

bool NameServers::usesProgram() const
{
    using Owner = RealSettings::NameServerOwner;
    return m_settings.nameServers == Owner::Resolvconf ||
           (m_settings.nameServers == Owner::Auto && QFile::exists(m_settings.resolvconf));
}

void NameServers::set(const QString& interface, const Uplink& brought)
{
    const auto uplink = brought.servers.isEmpty() ? Uplink() : brought;
    if (m_settings.nameServers == RealSettings::NameServerOwner::Nobody ||
        m_uplinks.value(interface) == uplink)
        return;
    if (uplink.servers.isEmpty())
        m_uplinks.remove(interface);
    else
        m_uplinks.insert(interface, uplink);
    if (!usesProgram())
        return writeFile();
    m_dirty.removeAll(interface);
    m_dirty.append(interface);
    runProgram();
}

QByteArray NameServers::fileText() const
{
    auto interfaces = m_uplinks.keys();
    std::sort(interfaces.begin(), interfaces.end(), [this](const auto& a, const auto& b) {
        return m_uplinks[a].metric < m_uplinks[b].metric;
    });
    QByteArray text = header;
    for (const auto& interface : std::as_const(interfaces))
        text += linesOf(interface, m_uplinks[interface]);
    return text;
}

void NameServers::writeFile()
{
    const auto& name = m_settings.resolvConf;
    if (isForeign(name))
        return finish(Failure{QStringLiteral("%1 is somebody else's, leaving it").arg(name)});
    const auto saved = saveText(name, fileText());
    if (!saved)
        m_retry.start(rewriteMilliseconds);
    finish(saved);
}

QStringList NameServers::programArguments(const QString& interface) const
{
    const bool gone = !m_uplinks.contains(interface);
    return {gone ? QStringLiteral("-d") : QStringLiteral("-a"),
            interface + QStringLiteral(".lumod")};
}

void NameServers::runProgram()
{
    if (m_program.state() != QProcess::NotRunning || m_dirty.isEmpty())
        return;
    const auto interface = m_dirty.takeFirst();
    m_telling = true;
    // Every kind of resolvconf takes or passes over the variable; not every one knows an option.
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("IF_METRIC"),
                       QString::number(m_uplinks.value(interface).metric));
    m_program.setProcessEnvironment(environment);
    m_program.start(m_settings.resolvconf, programArguments(interface));
    m_program.write(linesOf(interface, m_uplinks.value(interface)));
    m_program.closeWriteChannel();
    m_limit.start(programLimit);
}

void NameServers::finish(const Result<>& result)
{
    m_limit.stop();
    m_telling = false;
    if (!result && result.why() != m_fault)
        Q_EMIT failed(QStringLiteral("Name servers: ") + result.why());
    m_fault = result.why();
    runProgram();
    if (isSettled())
        Q_EMIT settled();
}
