// SPDX-License-Identifier: Apache-2.0
#include "world/played/worldcontrol.h"

#include "log.h"
#include "wire.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QJsonDocument>
#include <QThread>

#include <limits>
#include <unistd.h>

WorldControl::WorldControl(PlayedWorld& world, QObject* parent)
    : Daemon(world, parent)
    , m_world(world)
{
}

void WorldControl::answer(const Result<>& result) const
{
    if (!result)
        sendErrorReply(QStringLiteral("org.orva.lumod.World.Error.Invalid"), result.why());
}

QVariantMap WorldControl::outgoing(const QVariantMap& map) const
{
    return m_spoil(map);
}

QString WorldControl::Snapshot() const
{
    auto json = m_world.snapshot();
    json.insert(QStringLiteral("mode"), mode());
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

void WorldControl::Plug()
{
    m_world.plug(true);
}

void WorldControl::Unplug()
{
    m_world.plug(false);
}

QString WorldControl::AddAccessPoint(const QVariantMap& settings)
{
    const auto bssid = m_world.addAccessPoint(wire::plain(settings));
    answer(bssid);
    return bssid.value_or(QString());
}

void WorldControl::ChangeAccessPoint(const QString& accessPoint, const QVariantMap& changes)
{
    answer(m_world.changeAccessPoint(accessPoint, wire::plain(changes)));
}

void WorldControl::RemoveAccessPoint(const QString& accessPoint)
{
    answer(m_world.removeAccessPoint(accessPoint));
}

void WorldControl::PressWps(const QString& accessPoint)
{
    answer(m_world.pressWps(accessPoint));
}

void WorldControl::EnterWpsPin(const QString& accessPoint, const QString& pin)
{
    answer(m_world.enterWpsPin(accessPoint, pin));
}

void WorldControl::FailWps(const QString& message)
{
    answer(m_world.failWps(message));
}

void WorldControl::JoinStation(const QString& interface, const QString& hwAddress)
{
    answer(m_world.joinStation(interface, hwAddress));
}

void WorldControl::LeaveStation(const QString& hwAddress)
{
    answer(m_world.leaveStation(hwAddress));
}

void WorldControl::SetDelay(const QString& step, uint milliseconds)
{
    constexpr uint most = std::numeric_limits<int>::max();
    answer(m_world.setDelay(step, static_cast<int>(qMin(milliseconds, most))));
}

void WorldControl::Crash()
{
    qCWarning(lcLumod) << "Crashing, as asked";
    ::_exit(1);
}

void WorldControl::Hang(uint milliseconds)
{
    qCWarning(lcLumod) << "Hanging, as asked, for" << milliseconds << "ms";
    QThread::msleep(milliseconds);
}

void WorldControl::Garble(const QString& kind)
{
    const Spoiler spoiler = spoilerFor(kind);
    if (!spoiler)
        return answer(Failure{QStringLiteral("No such kind of garbage: ") + kind});
    m_spoil = spoiler;
    Q_EMIT m_world.addressesChanged();
    Q_EMIT m_world.scanned(m_world.seenNetworks());
}

void WorldControl::Lose(uint answers)
{
    m_lost = answers;
}

void WorldControl::Refuse(const QString& error)
{
    m_refusal = error;
}

void WorldControl::Say(const QString& signal, const QVariantList& arguments)
{
    auto message = QDBusMessage::createSignal(QStringLiteral("/org/orva/lumod"),
                                              QStringLiteral("org.orva.lumod"), signal);
    message.setArguments(arguments);
    connection().send(message);
}

QVariantMap WorldControl::InterfaceDetails(const QString& interface)
{
    if (m_lost > 0) {
        --m_lost;
        setDelayedReply(true); // and none comes
    } else if (!m_refusal.isEmpty()) {
        sendErrorReply(m_refusal, QStringLiteral("Refused, as asked"));
    }
    return Daemon::InterfaceDetails(interface);
}
