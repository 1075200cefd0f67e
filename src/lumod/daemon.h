// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/world.h"

#include <QDBusContext>
#include <QVariantMap>

/// The daemon's protocol half: the object whose adaptor is on the bus. It keeps the properties,
/// decodes what clients send, and encodes what its world tells. Methods, signals and properties are
/// named as on the wire; `dbus/org.orva.lumod.xml` describes them.
class Daemon : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_PROPERTY(bool Connected READ isConnected)
    Q_PROPERTY(QVariantMap Details READ details)
    Q_PROPERTY(int LogLevel READ logLevel WRITE setLogLevel)
    Q_PROPERTY(QString Mode READ mode)
    Q_PROPERTY(QVariantMap SoftApModeSettings READ softApModeSettings)
    Q_PROPERTY(QVariantMap WiredIpSettings READ wiredIpSettings WRITE setWiredIpSettings)
    Q_PROPERTY(QVariantMap WirelessIpSettings READ wirelessIpSettings WRITE setWirelessIpSettings)
    Q_PROPERTY(QVariantMap WirelessNetworks READ wirelessNetworks WRITE setWirelessNetworks)

public:
    /// Drives `world`, which it does not own and which outlives it.
    explicit Daemon(World& world, QObject* parent = nullptr);

    /// Puts the object on the bus, takes the name and says hello. False, with the reason in the
    /// log, when the name or the path is taken.
    [[nodiscard]] bool serve();

    /// True while the wired or the wireless interface is connected.
    [[nodiscard]] bool isConnected() const;
    /// The details map of every interface, by name.
    [[nodiscard]] QVariantMap details() const;
    /// 0 errors, 1 warnings, 2 information, 3 everything.
    [[nodiscard]] int logLevel() const;
    void setLogLevel(int level);
    /// "OffMode", the text given to `SetNormalMode`, or "SoftApMode" while only a soft access point
    /// runs.
    [[nodiscard]] QString mode() const;
    /// The settings that the last `StartSoftAp` gave to the access point that runs, its pass phrase
    /// masked; empty when none runs.
    [[nodiscard]] QVariantMap softApModeSettings() const;
    [[nodiscard]] QVariantMap wiredIpSettings() const { return m_wiredIpSettings; }
    void setWiredIpSettings(const QVariantMap& settings);
    [[nodiscard]] QVariantMap wirelessIpSettings() const { return m_wirelessIpSettings; }
    void setWirelessIpSettings(const QVariantMap& settings);
    [[nodiscard]] QVariantMap wirelessNetworks() const { return m_wirelessNetworks; }
    void setWirelessNetworks(const QVariantMap& networks);

public Q_SLOTS:
    void ForceWifiReconnect();
    virtual QVariantMap InterfaceDetails(const QString& interface);
    void Scan();
    void SetNormalMode(const QString& mode);
    void SetOffMode();
    void StartSoftAp(const QString& interface, const QVariantMap& settings);
    void StopSoftAp(const QString& interface);
    void WpsCancel();
    void WpsPbc();
    void WpsPin(const QString& pin);

Q_SIGNALS:
    void AddressesChanged();
    void AuthError(const QString& Ssid, const QString& Description);
    void CableStatus(bool CablePluggedIn);
    void Connected(const QString& Type);
    void Disconnected(const QString& Type);
    void Disconnecting(const QString& Type);
    void Error(const QString& Description);
    void InterfaceStatusChanged(const QString& Type, int Status);
    void ScanResults(const QVariantMap& Results);
    void SoftApError(const QString& Type, const QString& Message);
    void Started();
    void StationConnected(const QString& hwAddress);
    void StationDisconnected(const QString& hwAddress);
    void WpsCredentials(const QVariantMap& Credentials);
    void WpsError(const QString& Message);

protected:
    /// Every map of the world goes through here before it is sent.
    [[nodiscard]] virtual QVariantMap outgoing(const QVariantMap& map) const { return map; }

private Q_SLOTS:
    /// Ends the program: the connection to the bus never comes back by itself.
    void on_disconnected();

private:
    /// Answers the call that is being served with an error, and tells everybody.
    void refuse(const QString& text);
    void relayWorld();
    void relayRadio();
    [[nodiscard]] bool isUp(InterfaceDetails::Kind kind) const;

    World& m_world;
    QString m_mode;
    int m_logLevel = 2;
    QVariantMap m_wiredIpSettings;
    QVariantMap m_wirelessIpSettings;
    QVariantMap m_wirelessNetworks;
    QVector<KnownNetwork> m_networks;            ///< what `m_wirelessNetworks` says
    QMap<QString, QVariantMap> m_softApSettings; ///< masked, of those started and not stopped
};
