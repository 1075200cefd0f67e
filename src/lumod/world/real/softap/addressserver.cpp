// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/addressserver.h"

#include "world/real/engines/savetext.h"
#include "world/real/engines/strayprocesses.h"

#include <QFile>

namespace {

constexpr int retryMilliseconds = 5000;

} // namespace

AddressServer::AddressServer(const RealSettings& settings)
    : m_settings(settings)
    , m_file(QStringLiteral("%1/dnsmasq-%2.conf").arg(settings.runtimeDirectory, settings.softAp))
    , m_child(settings.helperDirectory + QStringLiteral("/lumod-keep"), QStringLiteral("dnsmasq"))
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &AddressServer::launch);
    connect(&m_child, &ChildProcess::stopped, this, [this] {
        clearUp();
        if (std::exchange(m_again, false))
            launch();
        else
            Q_EMIT stopped();
    });
    connect(&m_child, &ChildProcess::failed, this, [this](const QString& why, int pause) {
        clearUp();
        m_pause.start(pause);
        // Each of its tries ends alike.
        if (std::exchange(m_fault, why) != why || pause == ChildProcess::firstPause)
            Q_EMIT failed(QStringLiteral("dnsmasq has ended: ") + why);
    });
}

AddressServer::~AddressServer()
{
    blockSignals(true); // its owner is going
    m_child.end();
    clearUp();
}

void AddressServer::start(const QByteArray& configuration)
{
    m_configuration = configuration;
    launch();
}

void AddressServer::change(const QByteArray& configuration)
{
    if (configuration == std::exchange(m_configuration, configuration) || !isRunning())
        return;
    m_again = true;
    m_child.stop();
}

void AddressServer::launch()
{
    killProcesses(QStringLiteral("dnsmasq"), m_file);
    if (const auto saved = saveSecret(m_file, m_configuration); !saved) {
        m_pause.start(retryMilliseconds);
        return Q_EMIT failed(QStringLiteral("Cannot write ") + saved.why());
    }
    m_child.start(m_settings.dnsmasq, {QStringLiteral("--keep-in-foreground"),
                                       QStringLiteral("--conf-file=") + m_file});
}

void AddressServer::stop()
{
    m_pause.stop();
    m_again = false;
    if (isRunning())
        m_child.stop();
}

/// Nothing of it is left.
void AddressServer::clearUp()
{
    killProcesses(QStringLiteral("dnsmasq"), m_file);
    QFile::remove(m_file);
}
