// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/radio/supplicantbus.h"
#include "world/worldtypes.h"

#include <QMap>

/// The networks that wpa_supplicant knows, each under the path of its object.
class SupplicantNetworks : public QObject
{
    Q_OBJECT

public:
    /// `bus` outlives it.
    SupplicantNetworks(SupplicantBus& bus, bool backgroundScan);

    /// Has wpa_supplicant, on the interface of that path, know `networks` and no others; the best
    /// is looked for at once. The network `keep`, if one of them is it, stays as it is joined.
    void load(const QString& interface, QVector<KnownNetwork> networks, const QString& keep);
    /// Has it know none, which ends a connection.
    void clear(const QString& interface);
    /// It has ended, and knows none.
    void forget();

    /// The network of that path; nothing for another's.
    [[nodiscard]] std::optional<KnownNetwork> at(const QString& path) const;
    /// The network whose path ends with that number.
    [[nodiscard]] std::optional<KnownNetwork> numbered(int number) const;

Q_SIGNALS:
    /// wpa_supplicant does not take that network.
    void refused(const QString& ssid);

private:
    /// One list on its way: paths in the order of preference, as they become known.
    struct Loading
    {
        QString interface;
        QVector<QString> paths;
        int missing = 0;
    };

    void remove(const QString& interface, const QString& keep);
    void add(const KnownNetwork& network, int place);
    void added(const KnownNetwork& network, int place, const QDBusMessage& answer);
    void enable();

    SupplicantBus& m_bus;
    bool m_backgroundScan;
    QMap<QString, KnownNetwork> m_known; ///< by path
    Loading m_loading;
    int m_turn = 0; ///< answers to earlier lists are passed over
};
