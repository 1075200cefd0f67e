// SPDX-License-Identifier: Apache-2.0
// The daemon's loss and return, and the replay of what it had been told.
#include "backend/lumo/boundedcalls.h"
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumolog.h"
#include "backend/lumo/networkinglowlevellumo.h"
#include "backend/networklistener.h"
#include "freedesktopdbus.h"
#include "wifidaemonproxy.h"

#include <QDBusError>
#include <QScopedValueRollback>

#include <utility>

void Networking_LowLevel_LUMO::on_cableStatus_init()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    const auto wired = askDetails(m_listener.wiredInterface());
    if (wired)
        m_listener.setCurrentCableStatus(lumoField<bool>(*wired, "CableStatus"));
    if (wired && lumoField<bool>(*wired, "Connected"))
        noteAlreadyConnected(m_listener.wiredInterface(), QStringLiteral("Wired was "));
    if (lumoField<bool>(details(m_listener.wirelessInterface()), "Connected"))
        noteAlreadyConnected(m_listener.wirelessInterface(), QStringLiteral("Wireless was "));
    if (mode() != QLatin1String("SoftApMode"))
        return;
    const QStringList names = m_listener.softapInterfaces();
    for (const QString& name : names) {
        if (lumoField<bool>(details(name), "SoftApUp"))
            noteAlreadyConnected(name, QStringLiteral("SoftAP (%1)was ").arg(name));
    }
}

void Networking_LowLevel_LUMO::noteAlreadyConnected(const QString& interface, const QString& remark)
{
    if (m_interfacesConnected.contains(interface))
        return;
    LOG4CPLUS_WARN(lumoLogger(),
                   remark << "already connected, storing in interfacesAlreadyConnected!");
    m_interfacesConnected.insert(interface);
}

void Networking_LowLevel_LUMO::on_nameOwnerChanged(const QString& name, const QString& oldOwner,
                                                   const QString& newOwner)
{
    LOG4CPLUS_TRACE(lumoLogger(), name << ", was: " << oldOwner << ", now: " << newOwner);
    if (name != m_daemon->service())
        return;
    if (!newOwner.isEmpty()) {
        m_restartTimer.stop();
    } else if (!oldOwner.isEmpty()) {
        LOG4CPLUS_WARN(lumoLogger(),
                       "lumod has disappeared from the system bus, forcing a restart!");
        m_calls->forgetUnanswered();
        const int delay = m_restartBackoff.afterLoss(m_clock.elapsed());
        delay > 0 ? m_restartTimer.start(delay) : on_restartTimer_timeout();
    }
}

void Networking_LowLevel_LUMO::on_restartTimer_timeout()
{
    const QDBusMessage reply =
        m_calls->ask([this] { return m_daemon->InterfaceDetails(m_listener.wiredInterface()); });
    if (reply.type() != QDBusMessage::ErrorMessage)
        return;
    const QDBusError error(reply);
    LOG4CPLUS_ERROR(lumoLogger(), "Request to lumod failed, errorType: "
                                      << error.type() << " error name: " << error.name()
                                      << " message: " << lumoText(error.message()));
}

void Networking_LowLevel_LUMO::on_calls_askAgain()
{
    on_cableStatus_init();
    Q_EMIT AddressesChanged();
    if (!hasWireless())
        return;
    const QString wireless = m_listener.wirelessInterface();
    Q_EMIT InterfaceStatusChanged(wireless, interfaceStatus(wireless));
}

void Networking_LowLevel_LUMO::on_lumo_Started()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_INFO(lumoLogger(), "LUMO signal: Started");
    // A daemon that has gone again already is not started by this; the next one says Started too.
    const QScopedValueRollback<bool> replaying(m_replaying, true);
    if (m_appliedProfile != OrvaNetworkProfile())
        (void)applyProfile(OrvaNetworkProfile(m_appliedProfile));
    // The new daemon takes nothing of the old one's down, neither what was up nor what was leaving.
    QStringList down = connectedInterfaces() + m_listener.disconnectingInterfaces();
    down.sort();
    down.removeDuplicates();
    for (const QString& interface : std::as_const(down))
        on_lumo_Disconnected(interface);
    if (m_wpsRunning)
        on_lumo_WpsError(QStringLiteral("Networking restarted!"));
    for (const OrvaNetworkProfileSoftApSettings& settings : std::as_const(m_softAps))
        sendStartSoftAp(settings);
    // The scan is sent again once: one that crashes the daemon must not do so for ever.
    if (std::exchange(m_scanning, false))
        send(QStringLiteral("Scan"));
    Q_EMIT AddressesChanged();
}
