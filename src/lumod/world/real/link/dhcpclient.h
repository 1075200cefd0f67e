// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/childprocess.h"
#include "world/real/engines/enginetraces.h"
#include "world/real/link/dhcpevent.h"
#include "world/real/realsettings.h"
#include "world/worldtypes.h"

/// dhcpcd on one interface: DHCP or a static address, and IPv6 autoconfiguration beside it. It
/// watches the carrier by itself, so it runs on while the cable is out.
class DhcpClient : public QObject
{
    Q_OBJECT

public:
    /// `metric` is that of the routes.
    DhcpClient(QString interface, int metric, const RealSettings& settings);

    ~DhcpClient() override;
    Q_DISABLE_COPY(DhcpClient)

    /// Wants it running for the interface of that kernel index, with DHCP or `ip`; one that runs
    /// otherwise is ended first.
    void start(int index, const std::optional<StaticIp>& ip);
    /// Wants it ended, and what it has configured gone; `stopped` follows, at once when it does not
    /// run.
    void stop();
    /// Takes what dhcpcd has sent; words of an earlier start of it are dropped.
    void take(const DhcpEvent& event);

    /// The IPv4 address that is leased or set; empty for none.
    [[nodiscard]] QString address() const { return m_address; }
    /// The name servers, IPv4 ones first.
    [[nodiscard]] QStringList servers() const;
    [[nodiscard]] QString domain() const { return m_domain; }

Q_SIGNALS:
    /// Address, servers or domain have changed.
    void changed();
    void stopped();
    /// It has died, and has not come back in time to keep its address, which is gone.
    void abandoned();
    /// For a person; it goes on trying.
    void failed(const QString& description);

private:
    struct Wanted
    {
        int index;
        std::optional<StaticIp> ip;
    };

    void restart();
    void proceed();
    void launch();
    /// False while a dhcpcd has to end first. One of ours, whose keeper was killed, is told to, in
    /// the end by force; somebody else's is reported, and waited for while ours is wanted.
    [[nodiscard]] bool makeWay();
    [[nodiscard]] bool hasProgram();
    /// The process of the dhcpcd that holds the interface, ours or another's; 0: none.
    [[nodiscard]] int engine() const;
    /// Removes our configuration, and what a dhcpcd that ended amid its work leaves: its sockets.
    void removeLeftOvers();
    [[nodiscard]] bool writeConfiguration();
    [[nodiscard]] QStringList arguments() const;
    void forget();

    QString m_interface;
    int m_metric;
    const RealSettings& m_settings;
    QString m_configuration; ///< file name; the file is there while an engine of ours may run
    ChildProcess m_child;
    EngineTraces m_traces;
    std::optional<Wanted> m_wanted;
    int m_start = 0;         ///< counts starts
    bool m_inherits = false; ///< the next start takes over what a dead one has configured
    bool m_missing = false;  ///< whether the program was not there, which is said once
    QTimer m_way;            ///< until it is looked again whether the next step can be taken
    int m_waits = 0;         ///< how often it could not
    QTimer m_returned;       ///< until a dhcpcd that has died must have its address back
    QString m_address;
    QString m_domain;
    QMap<DhcpEvent::Source, QStringList> m_servers;
};
