// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"
#include "world/real/kernel/routesocket.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <QVector>

#include <memory>

/// One address of an interface, as the kernel has it.
struct KernelAddress
{
    QString address; ///< without prefix, lower case
    int prefix = 0;
    bool ipv6 = false;
    bool linkLocal = false;
    bool usable = true; ///< neither tentative, nor deprecated, nor held by somebody else

    bool operator==(const KernelAddress& other) const;
};

/// One default route in the main table.
struct DefaultRoute
{
    QString gateway;
    quint32 metric = 0;

    bool operator==(const DefaultRoute& other) const;
};

/// One network interface, as the kernel has it.
struct KernelLink
{
    int index = 0; ///< 0: there is none
    QString name;
    QString mac;
    bool ours = false; ///< made by lumod, by the mark that it sets
    bool up = false;   ///< set up by the administrator or by us
    bool carrier = false;
    QVector<KernelAddress> addresses; ///< in the kernel's order
    /// The default routes of lowest metric; an empty gateway when there is none.
    DefaultRoute route;
    DefaultRoute route6;

    bool operator==(const KernelLink& other) const;
    [[nodiscard]] bool has(const QString& address) const;
};

/// The mark of an interface that lumod has made: its alias.
constexpr auto madeByUs = "lumod";

/// The kernel's links, addresses and default routes, by route netlink.
///
/// Notifications only say that something has changed; what it is now is read anew, all of it: at
/// once for the first of a burst, a little later for those that follow. So a lost notification
/// loses nothing, and a storm of them costs a bounded share of one processor. Not thread-safe.
class Kernel : public QObject
{
    Q_OBJECT

public:
    explicit Kernel(QObject* parent = nullptr);
    ~Kernel() override;
    Q_DISABLE_COPY(Kernel)

    /// Subscribes and reads everything once.
    Result<> open();

    /// The interface of that name; index 0 when there is none.
    [[nodiscard]] KernelLink link(const QString& name) const;

    /// Reads everything now, so that `link` is not older than what an engine has just told.
    void refresh();

    /// Sets the interface up; a failure is logged.
    static void setUp(int index);

Q_SIGNALS:
    /// Something about some interface is other than before.
    void changed();

private:
    using Links = QHash<int, KernelLink>;

    void notified();
    void settle();
    void read();
    [[nodiscard]] bool dump(int type, Links& links);
    static void take(nl_object* object, Links& links);

    RouteSocket m_events;
    RouteSocket m_queries;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_settle;
    qint64 m_pause = 0; ///< ms to leave between two readings
    QElapsedTimer m_sinceReading;
    Links m_links; ///< by index
};
