// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/worldfile.h"
#include "world/world.h"

#include <QDeadlineTimer>
#include <QTimer>

/// The WPS sessions of the played radio: one runs at a time, and ends when an access point
/// answers, when it fails, or when the walk time is over.
class PlayedWps : public QObject
{
    Q_OBJECT

public:
    /// Both references outlive it.
    PlayedWps(World& world, const WorldDescription& description);

    [[nodiscard]] bool isRunning() const { return m_running; }

    /// Starts a session, by push button when `pin` is empty.
    void start(const QString& pin);
    /// The button of that access point is pressed; it stays open for the walk time.
    void press(const QString& bssid);
    /// The device's PIN is typed into that access point.
    void enterPin(const QString& bssid, const QString& pin);
    void fail(const QString& message);

Q_SIGNALS:
    /// A session has started or ended.
    void changed();

private:
    void match();
    void matchButton();
    void matchPin();
    void exchange(const QString& bssid);
    void finish();
    void end();

    World& m_world;
    const WorldDescription& m_description;
    bool m_running = false;
    QString m_pin;
    QMap<QString, QDeadlineTimer> m_pressed; ///< by BSSID
    QString m_pinBssid;                      ///< where `m_enteredPin` was typed
    QString m_enteredPin;
    QString m_target; ///< the access point that the session talks to
    QTimer m_walk;
    QTimer m_exchange;
};
