// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/childprocess.h"
#include "world/real/dhcpevent.h"
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
    /// Wants it ended; `stopped` follows, at once when it does not run.
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
    /// It has died, and has not come back in time to keep its address up.
    void abandoned();
    /// For a person; it goes on trying.
    void failed(const QString& description);

private:
    struct Wanted
    {
        int index;
        std::optional<StaticIp> ip;
    };

    void launch();
    [[nodiscard]] bool makeWay();
    /// The process of the dhcpcd that holds the interface, ours or another's; empty: none.
    [[nodiscard]] QString engine() const;
    /// Removes our configuration, and what a dhcpcd that ended amid its work leaves: its sockets.
    void removeLeftOvers();
    [[nodiscard]] bool writeConfiguration();
    [[nodiscard]] QStringList arguments() const;
    void forget();

    QString m_interface;
    int m_metric;
    const RealSettings& m_settings;
    QString m_configuration; ///< file name
    ChildProcess m_child;
    std::optional<Wanted> m_wanted;
    int m_start = 0;   ///< counts starts
    int m_engine = 0;  ///< the process id that dhcpcd has told, 0 before
    QTimer m_way;      ///< until the next start is tried
    int m_waits = 0;   ///< how often that was looked for
    QTimer m_returned; ///< until a dhcpcd that has died must have its address back
    QString m_address;
    QString m_domain;
    QMap<DhcpEvent::Source, QStringList> m_servers;
};
