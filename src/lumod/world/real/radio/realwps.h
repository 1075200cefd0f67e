// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/radio/supplicant.h"
#include "world/world.h"

/// The WPS sessions of the real radio: one runs at a time. While one runs wpa_supplicant knows no
/// network.
class RealWps : public QObject
{
    Q_OBJECT

public:
    /// Both outlive it.
    RealWps(World& world, Supplicant& supplicant);

    /// A session is wanted or runs.
    [[nodiscard]] bool isRunning() const { return m_step != Step::None; }
    /// One is wanted, and waits for the radio to be free.
    [[nodiscard]] bool isWaiting() const { return m_step == Step::Waiting; }

    /// Wants a session, by push button when `pin` is empty, in place of one that runs.
    void start(const QString& pin);
    /// The radio is free.
    void begin();
    /// Ends it with that reason, for a person.
    void fail(const QString& why);

Q_SIGNALS:
    /// A session is wanted, or has ended.
    void changed();

private:
    enum class Step {
        None,
        Waiting,   ///< for the radio
        Running,   ///< for the access point
        Finishing, ///< the credentials are here, and the access point is told so
    };

    void take(const std::optional<WpsCredentials>& credentials);
    void finish();
    void end();

    World& m_world;
    Supplicant& m_supplicant;
    Step m_step = Step::None;
    QString m_pin;
    WpsCredentials m_credentials;
    QTimer m_limit; ///< of the step
};
