// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"
#include "picture/networkinforules.h"

#include <QObject>
#include <QSet>

class CMNodes;
class CMValueNode;
class Networking_LowLevel;

/// The published picture of the network: the info record and the nodes that say parts of it.
///
/// It is the one gate through which the info is published: nobody else writes these nodes. The
/// backend is the authority for addresses, names of networks and MACs; states, connecting status
/// and known networks are the worker's own, and a readout leaves them alone.
///
/// The nodes are the state. A change of the info edits it in place, and no caller keeps a copy of
/// it across a call into the backend.
class Picture : public QObject
{
    Q_OBJECT
public:
    /// Binds the nodes, which exist in `nodes`, and publishes the first picture. Asks the backend,
    /// which must outlive this object, for the MACs and the cable. `wired` and `wireless` are the
    /// names of the interfaces.
    Picture(const CMNodes& nodes, Networking_LowLevel& backend, const QString& wired,
            const QString& wireless);

    /// The published info.
    [[nodiscard]] OrvaNetworkInfo info() const;

    /// Publishes the info after `change(OrvaNetworkInfo&)`.
    template <class Change>
    void edit(const Change& change)
    {
        OrvaNetworkInfo changed = info();
        change(changed);
        publishInfo(changed);
    }

    /// The same, with the overall state calculated anew; publishes that too.
    template <class Change>
    void editStates(const Change& change)
    {
        OrvaNetworkInfo changed = info();
        change(changed);
        publishInfoAndState(changed);
    }

    /// True if some link other than a soft AP is up.
    [[nodiscard]] bool isLinkUp() const { return !m_linksUp.isEmpty(); }
    /// The value of the link's node.
    [[nodiscard]] bool linkStatus() const;
    /// The value of the cable's node.
    [[nodiscard]] bool currentCableStatus() const;
    /// The MAC address in use, upper case with colons; empty while no backend has told one.
    [[nodiscard]] QString currentMac() const;
    /// The wired and the wireless interface, of those that are in between.
    [[nodiscard]] QStringList disconnecting() const;

    /// The link of an interface that carries no soft AP went up or down. `configured` names the
    /// interfaces that the profile in use asks for.
    void setLinkStatus(const QString& interface, bool up, Configured configured);
    /// The wired or the wireless interface is being taken down.
    void setDisconnecting(const QString& interface);
    /// The soft APs together are in this state. Leaves the overall state alone.
    void setSoftApState(OrvaNetworkState state);
    /// The cable was plugged in or pulled.
    void setCurrentCableStatus(bool connected, Configured configured);
    /// The wireless network of that SSID refused the association.
    void setAuthError(const QString& ssid);
    /// Writes the connecting message: `message`, or the name of the overall state where it is
    /// empty.
    void updateConnectingMessage(const QString& message);
    /// Asks the backend for the MAC address in use.
    void updateCurrentMac();

    /// Shows what is connected as in between, and no network as known.
    void shutDown();
    /// Takes that back. The networks of `profile` are known again.
    void cancelShutdown(const OrvaNetworkProfile& profile, OrvaNetworkState softApState);

public Q_SLOTS:
    void on_lowlevel_AddressesChanged();

Q_SIGNALS:
    /// The backend's account of the network has been published.
    void networkStateRead();
    /// The backend, which had told no MAC address at the construction, told one.
    void currentMacRecovered();

private:
    void publishInfo(const OrvaNetworkInfo& info);
    void publishInfoAndState(OrvaNetworkInfo info);
    void publishFirstMacs(const QString& ethernetMac, const QString& wirelessMac);
    void publishLocalhostUrl();
    /// Reads the backend's picture and publishes it.
    void readNetworkState();
    void recoverCurrentMac();
    void updateWebserverUrl();

    Networking_LowLevel& m_lowlevel;
    QString m_webserverPortSuffix;
    /// The links that are up. The states of the interfaces do not tell them: a link is up while its
    /// interface is in between, and the link of an interface without a record counts too.
    QSet<QString> m_linksUp;
    /// The interfaces that are in between because of the shutdown alone.
    QStringList m_downByShutdown;
    bool m_macMissed = false;        ///< No MAC at the construction, and none since.
    bool m_addressesChanged = false; ///< A readout is queued.

    // The worker's container owns them.
    CMValueNode* const m_infoNode;
    CMValueNode* const m_stateNode;
    CMValueNode* const m_stateConnectedNode;
    CMValueNode* const m_connectingMessageNode;
    CMValueNode* const m_currentStateNode;
    CMValueNode* const m_ethernetMacNode;
    CMValueNode* const m_wirelessMacNode;
    CMValueNode* const m_currentMacNode;
    CMValueNode* const m_cableStatusNode;
    CMValueNode* const m_webserverUrlNode;
    CMValueNode* const m_localhostUrlNode;
};
