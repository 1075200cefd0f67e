// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/childprocess.h"
#include "world/real/realsettings.h"

#include <QTimer>

/// dnsmasq for the stations of a soft access point. It is started again where it ends by itself.
class AddressServer : public QObject
{
    Q_OBJECT

public:
    /// `settings` outlive it.
    explicit AddressServer(const RealSettings& settings);
    /// Ends it, within some seconds.
    ~AddressServer() override;
    Q_DISABLE_COPY(AddressServer)

    /// Starts it, which must not run, with the text of its configuration file.
    void start(const QByteArray& configuration);
    /// Has it go on by another configuration, where it runs.
    void change(const QByteArray& configuration);
    /// Asks it to end; where it runs, `stopped` follows.
    void stop();
    /// Removes what one that has ended, or a lumod that was killed, may have left.
    void clearUp();
    [[nodiscard]] bool isRunning() const { return m_child.isRunning(); }

Q_SIGNALS:
    void stopped();
    /// For a person, and once for many tries of one outcome; it goes on trying.
    void failed(const QString& description);

private:
    void launch();

    const RealSettings& m_settings;
    QString m_file;
    QByteArray m_configuration;
    QString m_fault; ///< the last one told
    ChildProcess m_child;
    QTimer m_pause;
    bool m_again = false; ///< it is being ended to be started again
};
