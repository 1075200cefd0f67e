// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "daemon.h"
#include "world/played/garbage.h"
#include "world/played/playedworld.h"

/// The daemon over a played world, with the interface by which that world is changed. Methods
/// are named as on the wire; `dbus/org.orva.lumod.World.xml` describes them.
class WorldControl : public Daemon
{
    Q_OBJECT

public:
    /// Drives `world`, which it does not own and which outlives it.
    explicit WorldControl(PlayedWorld& world, QObject* parent = nullptr);

public Q_SLOTS:
    QString Snapshot() const;
    void Plug();
    void Unplug();
    QString AddAccessPoint(const QVariantMap& settings);
    void ChangeAccessPoint(const QString& accessPoint, const QVariantMap& changes);
    void RemoveAccessPoint(const QString& accessPoint);
    void PressWps(const QString& accessPoint);
    void EnterWpsPin(const QString& accessPoint, const QString& pin);
    void FailWps(const QString& message);
    void JoinStation(const QString& interface, const QString& hwAddress);
    void LeaveStation(const QString& hwAddress);
    void SetDelay(const QString& step, uint milliseconds);
    void Crash();
    void Hang(uint milliseconds);
    void Garble(const QString& kind);
    void Lose(uint answers);
    void Refuse(const QString& error);
    void Say(const QString& signal, const QVariantList& arguments);
    QVariantMap InterfaceDetails(const QString& interface) override;

protected:
    [[nodiscard]] QVariantMap outgoing(const QVariantMap& map) const override;

private:
    /// Answers the call with an error where `result` is a failure.
    void answer(const Result<>& result) const;

    PlayedWorld& m_world;
    uint m_lost = 0;   ///< So many answers are lost yet.
    QString m_refusal; ///< The error that questions end in; empty for none.
    Spoiler m_spoil = spoilerFor(QStringLiteral("none"));
};
