// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

#include <QObject>

/// State of an interface, or of the network as a whole.
class ORVA_API OrvaNetworkState
{
    Q_GADGET
public:
    enum Value : qint32 {
        Disconnected = 0, ///< Not connected; the initial state.
        Connected = 1,    ///< Connected.
        Disconnecting = 2 ///< In between: coming up or going down.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkState);
};

/// The interfaces that a profile configures. The names go to the connection daemon as its mode.
class ORVA_API OrvaNetworkProfileType
{
    Q_GADGET
public:
    enum Value : qint32 {
        Auto = 0,    ///< Both, the wired one preferred.
        Wired = 1,   ///< The wired interface alone.
        Wireless = 2 ///< The wireless interface alone.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkProfileType);
};

/// Security of a wireless network.
class ORVA_API OrvaNetworkProfileWirelessEncryption
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,  ///< Unsecured.
        Wep = 1,   ///< WEP, which the connection daemon does not support.
        WpaPsk = 2 ///< WPA pre-shared key.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkProfileWirelessEncryption);
};

/// The step that an interface takes to become connected.
class ORVA_API OrvaNetworkConnectingStatus
{
    Q_GADGET
public:
    enum Value : qint32 {
        Idle = 0,                ///< Nothing in progress.
        Connecting = 1,          ///< Trying to connect.
        AuthenticationFailed = 2 ///< The network refused the key.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkConnectingStatus);
};

/// The outcome of the last WPS session.
class ORVA_API OrvaNetworkWpsStatus
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,       ///< No session.
        InProgress = 1, ///< A session runs.
        Succeeded = 2,  ///< The last session brought credentials.
        Failed = 3      ///< The last session failed; `lastError` says why.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkWpsStatus);
};

/// Method of a WPS session.
class ORVA_API OrvaNetworkWpsType
{
    Q_GADGET
public:
    enum Value : qint32 {
        PushButton = 0, ///< A button on the router.
        Pin = 1         ///< A PIN that is entered at the router.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkWpsType);
};

/// Protocol of an address.
class ORVA_API OrvaNetworkAddressProtocol
{
    Q_GADGET
public:
    enum Value : qint32 {
        IPv4 = 0, ///< IPv4.
        IPv6 = 1  ///< IPv6.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkAddressProtocol);
};

/// Reach of an address.
class ORVA_API OrvaNetworkAddressScope
{
    Q_GADGET
public:
    enum Value : qint32 {
        Global = 0,   ///< Routable.
        LinkLocal = 1 ///< Valid on the link or on the host alone.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkAddressScope);
};

/// How far the device gets out of its network.
class ORVA_API OrvaNetworkOnline
{
    Q_GADGET
public:
    enum Value : qint32 {
        Unknown = 0,   ///< Connected, and nobody asks: no ping and no probe, or not yet.
        NoGateway = 1, ///< Not connected, without a gateway, or the gateway does not answer.
        Gateway = 2,   ///< The gateway answers; beyond it nothing does, or nobody asks.
        Portal = 3,    ///< Something else answers than the server that is probed, such as a login.
        Online = 4     ///< The server that is probed answers.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkOnline);
};

/// The radios that airplane mode blocks.
class ORVA_API OrvaAirplaneModeType
{
    Q_GADGET
public:
    enum Value : qint32 {
        AllRadios = 0, ///< Wi-Fi and Bluetooth.
        WifiOnly = 1   ///< Wi-Fi; Bluetooth goes on.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaAirplaneModeType);
};

/// The outcome of a try to join a wireless network.
class ORVA_API OrvaNetworkJoinResult
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,   ///< No try has ended since the host started.
        Joined = 1, ///< The network was joined, and gave an address.
        Failed = 2  ///< It was not; the reason says why.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkJoinResult);
};

/// Why a wireless network was not joined.
class ORVA_API OrvaNetworkJoinReason
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,        ///< It was joined, or no try has ended.
        NotInRange = 1,  ///< No access point of a known network was found.
        KeyRefused = 2,  ///< The network refused the key.
        NoAddress = 3,   ///< The network was joined and gave no address.
        Refused = 4,     ///< The network was found and not joined, for another reason than its key.
        CableFirst = 5,  ///< The cable has precedence.
        AirplaneMode = 6 ///< Airplane mode has the radio blocked.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaNetworkJoinReason);
};
