// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmreply.h"
#include "network/networkrecords.h"

#include <QObject>
#include <QVector>

/// The door to whatever configures the network.
///
/// The worker owns one backend for its whole life and reaches the network by no other path.
/// Commands go down through the operations and return at once whether they were handed on; what the
/// network does comes up through the signals. A backend may signal at any time after its
/// construction. Everything runs on the worker's thread.
class Networking_LowLevel : public QObject
{
    Q_OBJECT
public:
    /// The connection daemon's status code of an interface, passed through unchanged: any number.
    enum InterfaceStatus : int {
        Unknown = 0,    ///< None was reported yet.
        Idle = 2,       ///< The interface is up and usable: it may scan.
        Connecting = 4, ///< It talks to an access point that it found, or leaves one.
        Addressing = 6  ///< It has joined, and asks for an address.
    };

    /// Starts a scan; its results come through `ScanResults`. False when none was started.
    [[nodiscard]] virtual bool scanNetworks() = 0;
    /// Hands a profile to the network. False when that was refused.
    [[nodiscard]] virtual bool applyProfile(const OrvaNetworkProfile& profile) = 0;
    /// Asks for all interfaces to be taken down. False when that could not be sent.
    [[nodiscard]] virtual bool disconnect() = 0;
    /// Asks for the wireless link to be associated anew. False when that could not be sent.
    virtual bool forceWifiReconnect() = 0;
    /// Starts a push-button WPS session. False when one runs already; otherwise the reply is
    /// answered later, with the credentials or with an error.
    [[nodiscard]] virtual bool performWpsPbc(const CMReply<OrvaNetworkInterface>& reply) = 0;
    /// The same with a PIN of 8 digits.
    [[nodiscard]] virtual bool performWpsPin(const QString& pin,
                                             const CMReply<OrvaNetworkInterface>& reply) = 0;
    /// Asks for the soft access point of the settings' interface to run with these settings.
    virtual bool startSoftAp(const OrvaNetworkProfileSoftApSettings& settings) = 0;
    /// Asks for the soft access point of the settings' interface to stop.
    virtual bool stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings) = 0;

    // These wait for the answer, for a bounded time. A backend that cannot reach its daemon answers
    // empty text, false or 0.

    /// Hardware address of the wired interface, with colons.
    [[nodiscard]] virtual QString getEthernetMAC() = 0;
    /// Hardware address of the wireless interface, with colons.
    [[nodiscard]] virtual QString getWirelessMAC() = 0;
    /// A snapshot of interfaces, addresses and link details.
    [[nodiscard]] virtual OrvaNetworkInfo getNetworkState() = 0;
    /// True if an Ethernet cable is plugged in.
    [[nodiscard]] virtual bool cableStatus() = 0;
    /// True if the device has a wireless interface.
    [[nodiscard]] virtual bool hasWireless() = 0;
    /// Signal of the wireless link in dBm; 0.0 when there is no value.
    [[nodiscard]] virtual double getWirelessRssi() = 0;
    /// The last status reported for an interface; 0 when there was none.
    [[nodiscard]] virtual InterfaceStatus interfaceStatus(const QString& interface) = 0;

    /// The results of the running scan are not waited for any more; should it get lost, it is not
    /// started again.
    virtual void forgetScan() {}
    /// Asks for the end of the WPS session, which its reply tells. False when none can be ended.
    [[nodiscard]] virtual bool cancelWps() { return false; }

Q_SIGNALS:
    /// A scan has completed; carries its whole result.
    void ScanResults(const QVector<OrvaNetworkScanResult>& networks);
    /// Those of the same scan that cannot be joined; told before its results.
    void UnsupportedNetworks(const QVector<OrvaNetworkScanResult>& networks);
    /// Some interface's addresses changed.
    void AddressesChanged();
    /// A wireless network refused the association for reasons of authentication.
    void AuthError(const QString& ssid, const QString& description);
    /// The network layer reports an error.
    void Error(const QString& description);
    void InterfaceStatusChanged(const QString& interface,
                                Networking_LowLevel::InterfaceStatus status);
    /// The soft access point does not run, for all tries, as it was asked to.
    void SoftApError(const QString& interface, const QString& description);
    /// A station joined the soft access point; carries its hardware address.
    void StationConnected(const QString& mac);
    /// A station left the soft access point; carries its hardware address.
    void StationDisconnected(const QString& mac);
};

Q_DECLARE_METATYPE(Networking_LowLevel::InterfaceStatus)
