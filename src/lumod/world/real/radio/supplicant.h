// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/datagramsocket.h"
#include "world/real/radio/supplicantdecoding.h"
#include "world/real/radio/supplicantengine.h"
#include "world/real/radio/supplicantnetworks.h"
#include "world/real/radio/supplicantreason.h"
#include "world/real/realsettings.h"

#include <QElapsedTimer>

/// wpa_supplicant on one wireless interface: commands and data by D-Bus, and its control socket
/// listened to for why a join has failed. Nothing waits for it; what it has told is kept.
class Supplicant : public QObject
{
    Q_OBJECT

public:
    /// `settings` outlive it.
    Supplicant(QString interface, const RealSettings& settings);
    ~Supplicant() override;
    Q_DISABLE_COPY(Supplicant)

    /// Wants the interface of that kernel index driven. One that replaces another is taken anew.
    void start(int index) { m_engine.start(index); }
    /// Wants the interface let go.
    void stop() { m_engine.stop(); }
    /// Commands are taken.
    [[nodiscard]] bool isReady() const { return !path().isEmpty(); }
    /// Why they are not, for a person; empty while that is only a matter of time.
    [[nodiscard]] QString fault() const { return m_engine.fault(); }

    [[nodiscard]] supplicant::State state() const { return m_state; }
    /// The path of the network that is joined or being joined; empty for none.
    [[nodiscard]] QString networkPath() const { return m_network; }
    [[nodiscard]] std::optional<KnownNetwork> network() const { return m_networks.at(m_network); }
    /// The access point that is joined; nothing for none.
    [[nodiscard]] std::optional<supplicant::Bss> accessPoint() const;
    /// The access points that the last scan has heard, and the joined one.
    [[nodiscard]] QList<supplicant::Bss> heard() const { return m_heard.values(); }
    /// The signal level of what is joined, in dBm. One that is older than a second is asked for
    /// anew, for the next call.
    [[nodiscard]] int signalLevel() const;

    /// Has it join the best of these; what it is joined to stays if it is among them and `keep`.
    void join(const QVector<KnownNetwork>& networks, bool keep);
    /// Has it leave what it is joined to, and know no network.
    void leave();
    /// Ends in `scanned`. No connection is moved by it.
    void scan();
    /// Starts a WPS session, by push button when `pin` is empty.
    void startWps(const QString& pin);
    void cancelWps();

Q_SIGNALS:
    /// Commands are taken from now on; it knows no network.
    void ready();
    /// It has gone, or lets the interface go.
    void lost();
    /// The state or the network has changed.
    void changed();
    /// A scan that was asked for is over; `fault` is for a person, empty for none.
    void scanned(const QString& fault);
    void keyRefused(const QString& ssid);
    /// The driver does not try to join what it has been told to.
    void driverRefused();
    /// The credentials that a WPS session has brought; nothing when they cannot be used to join.
    void wpsBrought(const std::optional<WpsCredentials>& credentials);
    void wpsSucceeded();
    void wpsFailed(const QString& why);
    /// For a person; it goes on trying.
    void failed(const QString& description);

private:
    [[nodiscard]] QString path() const { return m_engine.path(); }
    void setUp();
    void listen();
    void forget();
    /// The control socket's path.
    [[nodiscard]] QString speaker() const;
    void requestScan();
    void endScan(const QString& fault);

    void on_told(const QString& path, const QString& name, const QVariantList& arguments);
    void on_properties(const QString& path, const QString& interface,
                       const QVariantMap& properties);
    void on_reason(const QByteArray& datagram);
    void finishScan(bool success);
    void failScan(int error);
    [[nodiscard]] bool hasRejected(const QString& ssid) const;

    QString m_interface;
    const RealSettings& m_settings;
    mutable SupplicantBus m_bus;
    SupplicantEngine m_engine;
    SupplicantNetworks m_networks;
    DatagramSocket m_reasons;
    supplicant::State m_state = supplicant::State::Away;
    QString m_network;
    QString m_current;                       ///< path of the access point that is joined
    QHash<QString, supplicant::Bss> m_heard; ///< by path
    QList<QByteArray> m_rejecting;           ///< access points that took the key for wrong, by WPA3
    QTimer m_scanAgain;                      ///< until a radio that was busy is asked anew
    QTimer m_scanLimit;                      ///< runs while a scan is asked for
    QTimer m_scanned;                        ///< until what belongs to a scan has been told
    QString m_scanFault;
    mutable QElapsedTimer m_polled;
    mutable int m_signal = 0;
};
