// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>
#include <QTimer>

#include <sys/types.h>

/// An engine: a program that lumod starts and that never outlives lumod. What it writes goes to
/// lumod's log at debug level.
class ChildProcess : public QObject
{
    Q_OBJECT

public:
    static constexpr int firstPause = 100; ///< ms, of one that has lived well

    /// `keeper` is the path of lumod-keep.
    ChildProcess(QString keeper, QString title, QObject* parent = nullptr);
    /// `end()`.
    ~ChildProcess() override;
    Q_DISABLE_COPY(ChildProcess)

    /// Keeps the rest of a line behind `word`, a secret, out of the log.
    void hideAfter(const QByteArray& word) { m_secretWord = word; }
    /// Its last words are the last line of which `tellsWhy` is true; without it, the last of all.
    void keepLastThat(bool (*tellsWhy)(const QString& line)) { m_tellsWhy = tellsWhy; }
    /// Starts the program, which must not run.
    void start(const QString& program, const QStringList& arguments);
    /// Kills at once what is left of the program where lumod-keep was killed and could not do it;
    /// the program has ended.
    void killOrphans();
    /// Asks the program to end; `stopped` follows, at once when none runs.
    void stop();
    /// For an owner that is going: ends the program and waits for that, some seconds at most.
    /// Nothing is signalled any more.
    void end();
    /// It was asked to end, and has not yet.
    [[nodiscard]] bool isEnding() const { return isRunning() && !m_wanted; }
    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

Q_SIGNALS:
    /// It has ended by itself; `why` is its last words, or its exit status. Whoever starts it again
    /// waits `pause` ms before: longer each time, unless it lived well.
    void failed(const QString& why, int pause);
    /// It has ended because it was asked to.
    void stopped();

private:
    void relay();
    void on_finished();

    QString m_keeper;
    QString m_title;
    QProcess m_process;
    pid_t m_group = 0; ///< the process group of what was started; 0: all of it has ended
    QByteArray m_secretWord;
    bool (*m_tellsWhy)(const QString& line) = nullptr;
    QString m_lastLine;
    QTimer m_calm; ///< runs while the program is young: one that ends then waits longer
    int m_pause = 0;
    bool m_wanted = false;
};
