// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"
#include "world/real/realsettings.h"

#include <QMap>
#include <QProcess>
#include <QStringList>
#include <QTimer>

/// The name server is reached through its interface alone.
[[nodiscard]] bool isLinkLocal(const QString& server);

/// Writes down which name servers the device asks: a resolv.conf of its own, or by the program
/// `resolvconf`. A file that somebody else has written is left alone.
class NameServers : public QObject
{
    Q_OBJECT

public:
    /// The name servers and the domain that one interface brings.
    struct Uplink
    {
        int metric = 0; ///< the lowest comes first
        QStringList servers;
        QString domain;

        bool operator==(const Uplink& other) const;
    };

    explicit NameServers(const RealSettings& settings);
    /// Takes back what it has written.
    ~NameServers() override;
    Q_DISABLE_COPY(NameServers)

    /// Writes what `interface` brings now; one without servers brings nothing.
    void set(const QString& interface, const Uplink& uplink);
    /// Everything has been written, or has failed.
    [[nodiscard]] bool isSettled() const { return m_dirty.isEmpty() && !m_telling; }

Q_SIGNALS:
    void settled();
    /// For a person; told once until it succeeds again.
    void failed(const QString& description);

private:
    [[nodiscard]] bool usesProgram() const;
    void writeFile();
    [[nodiscard]] QByteArray fileText() const;
    void runProgram();
    void awaitProgram();
    void finish(const Result<>& result);
    [[nodiscard]] QStringList programArguments(const QString& interface) const;

    const RealSettings& m_settings;
    QMap<QString, Uplink> m_uplinks; ///< by interface
    QStringList m_dirty;             ///< interfaces about which `resolvconf` still has to hear
    bool m_telling = false;          ///< `resolvconf` runs for one that is not among them any more
    QProcess m_program;
    QTimer m_limit;  ///< of the program
    QTimer m_retry;  ///< until a file that could not be written is tried again
    QString m_fault; ///< the last one told; empty after a success
};
