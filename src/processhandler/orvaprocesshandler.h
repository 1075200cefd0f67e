// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva_global.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <iosfwd>
#include <memory>

class QProcess;

/// The end of a program's run.
class ORVA_API OrvaProcessHandlerResult
{
public:
    /// The ways in which a run ends.
    enum class End {
        Exited,     ///< It ended by itself, with `exitCode`.
        NotStarted, ///< There is no such program, or it may not be run.
        Crashed,    ///< A signal ended it.
        TimedOut,   ///< It ran longer than it was given, and was killed.
        Killed      ///< `kill()` ended it.
    };

    /// A run that was never started.
    OrvaProcessHandlerResult() = default;
    /// `data` is what the program wrote, in the local encoding.
    OrvaProcessHandlerResult(End end, int exitCode, const QByteArray& data);

    /// The program ran, ended by itself and returned 0.
    [[nodiscard]] bool finishedOk() const { return m_end == End::Exited && m_exitCode == 0; }
    /// The way in which the run ended.
    [[nodiscard]] End end() const { return m_end; }
    /// The program's exit status; of meaning only where `end()` is `End::Exited`.
    [[nodiscard]] int exitCode() const { return m_exitCode; }
    /// The text that it wrote to its standard output and standard error, together; where it was not
    /// started, the reason in words.
    [[nodiscard]] QString getData() const;

private:
    End m_end = End::NotStarted;
    int m_exitCode = -1;
    QByteArray m_data;
};

/// Writes how the run ended, in one line, without what the program wrote.
ORVA_API std::ostream& operator<<(std::ostream& stream, const OrvaProcessHandlerResult& result);

/// A program that runs beside the thread until its end is waited for. It does not outlive this
/// object.
class ORVA_API OrvaProcessRun
{
public:
    /// Starts the program.
    OrvaProcessRun(const QString& program, const QStringList& arguments);
    /// Kills the program if it still runs.
    ~OrvaProcessRun();
    Q_DISABLE_COPY_MOVE(OrvaProcessRun)

    /// Waits for the end. Blocks the thread, at most `timeout` milliseconds (and the moment that a
    /// kill takes). To be called once.
    [[nodiscard]] OrvaProcessHandlerResult wait(int timeout);

private:
    std::unique_ptr<QProcess> m_process;
};

/// Runs one program at a time. No program outlives its handler.
///
/// The kernel kills the program by its parent death signal where the process of the handler dies
/// without the handler's destructor. A program that has privileges of its file (set-user-ID, or
/// capabilities as Debian's `ping` has) loses that signal where the process is not root's: it then
/// ends with the service's cgroup, or by itself.
class ORVA_API OrvaProcessHandler : public QObject
{
    Q_OBJECT
public:
    /// The channel of a line: standard output or standard error. Merged channels give `Output`.
    enum class Channel { Output, Error };
    /// The way in which the two channels of a program come: apart or as one.
    enum class Channels { Separate, Merged };

    /// Is told once how the run ended. May start the next run.
    using OnFinished = std::function<void(const OrvaProcessHandlerResult& result)>;
    /// Is given whole lines, without their line ends, as they come.
    using OnOutput = std::function<void(const QStringList& lines, Channel channel)>;

    /// A handler of no program yet; lives on the event loop's thread.
    explicit OrvaProcessHandler(QObject* parent = nullptr);
    /// Kills the program that runs, without a call to its `onFinished`.
    ~OrvaProcessHandler() override;

    /// Starts a program; its end comes to `onFinished`, once, from the event loop, and what it
    /// writes to `onOutput` as it comes, in whole lines. It is killed after `timeout` milliseconds
    /// (0 or less: never). A program that runs already is killed first, without a call to its
    /// `onFinished`.
    void startAsync(const QString& program, const QStringList& arguments, int timeout,
                    const OnFinished& onFinished, const OnOutput& onOutput = {},
                    Channels channels = Channels::Merged);

    /// Runs a program and waits for its end. Blocks the thread, at most `timeout` milliseconds (and
    /// the moment that a kill takes).
    [[nodiscard]] static OrvaProcessHandlerResult
    startSync(const QString& program, const QStringList& arguments, int timeout);

    /// True if a program runs that `startAsync` started.
    [[nodiscard]] bool isRunning() const;
    /// Kills the program; `onFinished` is told with the end `Killed`.
    void kill();

private:
    void end(OrvaProcessHandlerResult::End end);
    void readChannel(Channel channel);
    void abandon();

    std::unique_ptr<QProcess> m_process;
    QTimer m_timeout;
    OnFinished m_onFinished;
    OnOutput m_onOutput;
    OrvaProcessHandlerResult::End m_forcedEnd = OrvaProcessHandlerResult::End::Exited;
    QByteArray m_data;
    QByteArray m_partialLine[2];
    quint64 m_run = 0;
};
