// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/childprocess.h"

#include "api/core/orvamask.h"
#include "log.h"

#include <QCoreApplication>

#include <csignal>

namespace {

constexpr int longestPause = 60000;   // ms
constexpr int grownUp = 30000;        // ms
constexpr int endMilliseconds = 5000; // longer than lumod-keep's patience

} // namespace

ChildProcess::ChildProcess(QString keeper, QString title, QObject* parent)
    : QObject(parent)
    , m_keeper(std::move(keeper))
    , m_title(std::move(title))
{
    m_calm.setSingleShot(true);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardInputFile(QProcess::nullDevice());
    connect(&m_process, &QProcess::readyRead, this, &ChildProcess::relay);
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &ChildProcess::on_finished);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            on_finished();
    });
}

ChildProcess::~ChildProcess()
{
    end();
}

void ChildProcess::end()
{
    blockSignals(true); // its owner is going
    if (!isRunning())
        return;
    m_process.terminate();
    if (m_process.waitForFinished(endMilliseconds))
        return;
    m_process.kill();
    m_process.waitForFinished(endMilliseconds);
}

void ChildProcess::start(const QString& program, const QStringList& arguments)
{
    m_wanted = true;
    m_lastLine.clear();
    m_calm.start(grownUp);
    m_process.start(m_keeper,
                    QStringList{QString::number(QCoreApplication::applicationPid()), program} +
                        arguments);
    m_group = static_cast<pid_t>(m_process.processId());
}

void ChildProcess::killOrphans()
{
    if (m_group > 0 && !isRunning())
        ::kill(-std::exchange(m_group, 0), SIGKILL);
}

void ChildProcess::stop()
{
    m_wanted = false;
    if (isRunning())
        m_process.terminate();
    else
        Q_EMIT stopped();
}

void ChildProcess::relay()
{
    while (m_process.canReadLine()) {
        auto line = m_process.readLine();
        if (const int at = m_secretWord.isEmpty() ? -1 : line.indexOf(m_secretWord); at >= 0)
            line = line.left(at) + m_secretWord + ' ' + orvaMask().toUtf8();
        const auto text = QString::fromUtf8(line).trimmed();
        qCDebug(lcLumod).noquote() << m_title + QLatin1Char(':') << text;
        if (!m_tellsWhy || m_tellsWhy(text))
            m_lastLine = text;
    }
}

void ChildProcess::on_finished()
{
    relay();
    if (m_process.exitStatus() == QProcess::NormalExit || ::kill(-m_group, 0) != 0)
        m_group = 0; // all have ended, and the number may be anybody's
    if (!m_wanted)
        return Q_EMIT stopped();
    m_pause = m_calm.isActive() ? qBound(firstPause, m_pause * 2, longestPause) : firstPause;
    m_calm.stop();
    const auto how = m_process.error() == QProcess::FailedToStart
                         ? m_process.errorString()
                         : QStringLiteral("exit status %1").arg(m_process.exitCode());
    Q_EMIT failed(m_lastLine.isEmpty() ? how : m_lastLine, m_pause);
}
