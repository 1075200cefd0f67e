// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/radio/supplicant.h"
#include "world/world.h"

#include <QSet>

/// The scans of the real radio: one at a time is wanted or runs.
class RealScan : public QObject
{
    Q_OBJECT

public:
    /// Both outlive it.
    RealScan(World& world, Supplicant& supplicant);

    /// One is wanted, and waits for the radio to be free.
    [[nodiscard]] bool isWaiting() const { return m_step == Step::Waiting; }
    [[nodiscard]] bool isRunning() const { return m_step == Step::Running; }

    /// Wants a scan, unless there is one.
    void want();
    /// The radio is free.
    void begin();
    /// Ends it with what was heard, or with the reason, for a person, for which nothing was.
    void end(const QString& fault);

Q_SIGNALS:
    /// A scan has ended.
    void ended();

private:
    enum class Step {
        None,
        Waiting, ///< for the radio
        Running,
    };

    [[nodiscard]] QVector<ScannedNetwork> seenNetworks();

    World& m_world;
    Supplicant& m_supplicant;
    Step m_step = Step::None;
    QSet<QByteArray> m_unreadable; ///< names that were logged as no text
};
