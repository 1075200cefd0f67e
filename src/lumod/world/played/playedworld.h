// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/playedcable.h"
#include "world/played/playedradio.h"
#include "world/played/playedsoftaps.h"

#include <QJsonObject>

#include <functional>

/// A world that exists only here: a cable, access points, stations. It begins as the world file
/// describes it and changes through the functions below. Their failures are words for a person.
class PlayedWorld : public World
{
    Q_OBJECT

public:
    explicit PlayedWorld(WorldDescription description, QObject* parent = nullptr);

    [[nodiscard]] QStringList interfaces() const override;
    [[nodiscard]] InterfaceDetails details(const QString& interface) const override;
    void announce() override;
    void bringUp(const NetworkConfiguration& configuration) override;
    void takeDown() override;
    void scan() override;
    void reassociate() override;
    void startWps(const QString& pin) override;
    void cancelWps() override;
    Result<> startSoftAp(const QString& interface, const SoftApSettings& settings) override;
    void stopSoftAp(const QString& interface) override;

    void plug(bool plugged);
    /// Gives its BSSID.
    Result<QString> addAccessPoint(const QVariantMap& settings);
    Result<> changeAccessPoint(const QString& accessPoint, const QVariantMap& changes);
    Result<> removeAccessPoint(const QString& accessPoint);
    Result<> pressWps(const QString& accessPoint);
    Result<> enterWpsPin(const QString& accessPoint, const QString& pin);
    Result<> failWps(const QString& message);
    Result<> joinStation(const QString& interface, const QString& hwAddress);
    Result<> leaveStation(const QString& hwAddress);
    Result<> setDelay(const QString& step, int milliseconds);

    /// The networks that a scan finds now.
    [[nodiscard]] QVector<ScannedNetwork> seenNetworks() const { return m_radio.seenNetworks(); }
    /// The whole state, keys of networks masked.
    [[nodiscard]] QJsonObject snapshot() const;

private:
    [[nodiscard]] RadioPermission permission() const;
    [[nodiscard]] bool hasRadio() const { return !m_description.wireless.isEmpty(); }
    Result<> withWpsOf(const QString& accessPoint, const std::function<void(const QString&)>& act);
    [[nodiscard]] InterfaceStatus status(const QString& interface) const;

    WorldDescription m_description;
    NetworkConfiguration m_configuration;
    bool m_off = true; ///< no mode has been set
    PlayedCable m_cable;
    PlayedRadio m_radio;
    PlayedSoftAps m_softAps;
};
