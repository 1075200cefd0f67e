// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/worldfile.h"
#include "world/world.h"

#include <QTimer>

/// The soft access points of the played world and the stations joined to them.
class PlayedSoftAps : public QObject
{
    Q_OBJECT

public:
    /// Both references outlive it.
    PlayedSoftAps(World& world, const WorldDescription& description);

    /// Starts the access point of `interface`. One that runs starts again, and its stations have to
    /// join afresh.
    void start(const QString& interface, const SoftApSettings& settings);
    void stop(const QString& interface);
    void stopAll();
    void announceStatus();
    [[nodiscard]] InterfaceDetails details(const QString& interface) const;
    [[nodiscard]] InterfaceStatus status(const QString& interface) const;
    [[nodiscard]] QStringList stations(const QString& interface) const;

    /// Joins a station. False when no soft access point is up there.
    [[nodiscard]] bool join(const QString& interface, const QString& hwAddress);
    /// Takes a station away. False when it is joined nowhere.
    [[nodiscard]] bool leave(const QString& hwAddress);

private:
    enum class Phase { Down, Starting, Up };

    struct SoftAp
    {
        Phase phase = Phase::Down;
        SoftApSettings settings;
        QStringList stations;
        int start = 0; ///< counts starts, so that an outdated delay is recognised
    };

    void comeUp(const QString& interface, int start);
    void dropStations(SoftAp& softAp);
    void setPhase(const QString& interface, Phase phase);

    World& m_world;
    const WorldDescription& m_description;
    QMap<QString, SoftAp> m_softAps; ///< by interface
};
