// SPDX-License-Identifier: Apache-2.0
#include "orvaprocesshandler.h"

#include "boundprocess.h"
#include "core/dbglog.h"

#include <ostream>

namespace {

using End = OrvaProcessHandlerResult::End;

/// The time that a killed program may take to go.
constexpr int killGraceMs = 1000;

End endOf(const QProcess& process)
{
    // QProcess calls a program that could not start a normal exit.
    if (process.error() == QProcess::FailedToStart)
        return End::NotStarted;
    return process.exitStatus() == QProcess::NormalExit ? End::Exited : End::Crashed;
}

void killAndWait(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished(killGraceMs);
}

const char* nameOf(End end)
{
    switch (end) {
    case End::Exited:
        return "exited";
    case End::NotStarted:
        return "could not be started";
    case End::Crashed:
        return "crashed";
    case End::TimedOut:
        return "timed out";
    case End::Killed:
        return "was killed";
    }
    return "";
}

} // namespace

OrvaProcessHandlerResult::OrvaProcessHandlerResult(End end, int exitCode, const QByteArray& data)
    : m_end(end)
    , m_exitCode(exitCode)
    , m_data(data)
{
}

QString OrvaProcessHandlerResult::getData() const
{
    return QString::fromLocal8Bit(m_data);
}

std::ostream& operator<<(std::ostream& stream, const OrvaProcessHandlerResult& result)
{
    stream << nameOf(result.end());
    if (result.end() == End::Exited)
        stream << " with status " << result.exitCode();
    if (result.end() == End::NotStarted)
        stream << ": " << result.getData();
    return stream;
}

OrvaProcessRun::OrvaProcessRun(const QString& program, const QStringList& arguments)
    : m_process(std::make_unique<BoundProcess>())
{
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->start(program, arguments);
}

OrvaProcessRun::~OrvaProcessRun()
{
    killAndWait(*m_process);
}

OrvaProcessHandlerResult OrvaProcessRun::wait(int timeout)
{
    // An end that was noticed already is not waited for with success.
    if (m_process->waitForFinished(timeout) || m_process->state() == QProcess::NotRunning)
        return m_process->error() == QProcess::FailedToStart
                   ? OrvaProcessHandlerResult(End::NotStarted, -1,
                                              m_process->errorString().toLocal8Bit())
                   : OrvaProcessHandlerResult(endOf(*m_process), m_process->exitCode(),
                                              m_process->readAll());
    killAndWait(*m_process);
    return {End::TimedOut, -1, m_process->readAll()};
}

OrvaProcessHandler::OrvaProcessHandler(QObject* parent)
    : QObject(parent)
{
    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, [this] {
        m_forcedEnd = End::TimedOut;
        m_process->kill();
    });
}

OrvaProcessHandler::~OrvaProcessHandler()
{
    abandon();
}

void OrvaProcessHandler::startAsync(const QString& program, const QStringList& arguments,
                                    int timeout, const OnFinished& onFinished,
                                    const OnOutput& onOutput, Channels channels)
{
    abandon();
    m_process = std::make_unique<BoundProcess>();
    m_onFinished = onFinished;
    m_onOutput = onOutput;
    m_forcedEnd = End::Exited;
    m_data.clear();
    m_partialLine[0].clear();
    m_partialLine[1].clear();

    QProcess* process = m_process.get();
    process->setProcessChannelMode(channels == Channels::Merged ? QProcess::MergedChannels
                                                                : QProcess::SeparateChannels);
    process->setStandardInputFile(QProcess::nullDevice());
    connect(process, &QProcess::readyReadStandardOutput, this,
            [this] { readChannel(Channel::Output); });
    connect(process, &QProcess::readyReadStandardError, this,
            [this] { readChannel(Channel::Error); });
    // Queued: the handler may be started again from within its own end. A run that was abandoned in
    // the meantime is not ended a second time.
    const auto endOfThisRun = [this, run = m_run] {
        if (run == m_run)
            end(endOf(*m_process));
    };
    connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, endOfThisRun,
            Qt::QueuedConnection);
    connect(
        process, &QProcess::errorOccurred, this,
        [endOfThisRun](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                endOfThisRun();
        },
        Qt::QueuedConnection);
    process->start(program, arguments);
    if (timeout > 0)
        m_timeout.start(timeout);
}

OrvaProcessHandlerResult OrvaProcessHandler::startSync(const QString& program,
                                                       const QStringList& arguments, int timeout)
{
    return OrvaProcessRun(program, arguments).wait(timeout);
}

bool OrvaProcessHandler::isRunning() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

void OrvaProcessHandler::kill()
{
    if (!isRunning())
        return;
    m_forcedEnd = End::Killed;
    m_process->kill();
}

void OrvaProcessHandler::readChannel(Channel channel)
{
    m_process->setReadChannel(channel == Channel::Output ? QProcess::StandardOutput
                                                         : QProcess::StandardError);
    const QByteArray bytes = m_process->readAll();
    m_data += bytes;
    if (!m_onOutput)
        return;
    QByteArray& partial = m_partialLine[channel == Channel::Output ? 0 : 1];
    partial += bytes;
    QList<QByteArray> pieces = partial.split('\n');
    partial = pieces.takeLast();
    QStringList lines;
    for (const QByteArray& piece : std::as_const(pieces))
        lines << QString::fromLocal8Bit(piece);
    if (!lines.isEmpty())
        m_onOutput(lines, channel);
}

void OrvaProcessHandler::end(End naturalEnd)
{
    m_timeout.stop();
    const End finalEnd = m_forcedEnd != End::Exited ? m_forcedEnd : naturalEnd;
    if (finalEnd == End::NotStarted)
        m_data = m_process->errorString().toLocal8Bit();
    const OrvaProcessHandlerResult result(finalEnd, m_process->exitCode(), m_data);
    const OnFinished onFinished = std::move(m_onFinished);
    m_onFinished = nullptr;
    if (onFinished)
        onFinished(result);
}

void OrvaProcessHandler::abandon()
{
    ++m_run;
    m_timeout.stop();
    m_onFinished = nullptr;
    m_onOutput = nullptr;
    if (!m_process)
        return;
    m_process->disconnect(this);
    killAndWait(*m_process);
    m_process.reset();
}
