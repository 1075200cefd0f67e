// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

#include <QStringList>

// The rules of the published network state, from plain values to plain values.

/// The interfaces that the profile in use asks for: none while networking is stopped.
struct Configured
{
    bool wired = false;
    bool wireless = false;
};

/// An interface as it is known before it was ever up.
struct NamedInterface
{
    QString name;
    QString mac; ///< With colons; may be empty.
};

/// The first info: everything is disconnected.
[[nodiscard]] OrvaNetworkInfo firstInfo(const NamedInterface& wired, const NamedInterface& wireless,
                                        bool cable, bool airplaneMode);

/// The overall state: connected when the wired or the wireless interface is, disconnected when both
/// are, else in between. Soft access points take no part.
[[nodiscard]] OrvaNetworkState calculateNetworkInfoState(const OrvaNetworkInfo& info);

/// The info with the state of the wired or the wireless interface set; another name changes
/// nothing.
[[nodiscard]] OrvaNetworkInfo withInterfaceState(OrvaNetworkInfo info, const QString& interface,
                                                 OrvaNetworkState state);

/// The names of the interfaces, wired and wireless, that are in the state.
[[nodiscard]] QStringList interfacesIn(const OrvaNetworkInfo& info, OrvaNetworkState state);

/// The info without a WPS session; what the last one brought stays.
[[nodiscard]] OrvaNetworkInfo withoutWpsSession(OrvaNetworkInfo info);

/// The info with the connecting status that follows from links and configuration. While some link
/// is up nothing is in progress. Without a link each configured interface is connecting, the wired
/// one only with its cable in. The others keep their status. A wireless interface that is not
/// connecting has no WPS session either.
[[nodiscard]] OrvaNetworkInfo withConnectingStatus(OrvaNetworkInfo info, bool linkUp,
                                                   Configured configured);

/// The info with nothing in progress on the interfaces that are not configured.
[[nodiscard]] OrvaNetworkInfo withUnconfiguredIdle(OrvaNetworkInfo info, Configured configured);

/// The info with the cable in or out. While no link is up, a configured wired interface is
/// connecting as soon as its cable is in; without a cable it is not.
[[nodiscard]] OrvaNetworkInfo withCable(OrvaNetworkInfo info, bool connected,
                                        Configured configured);

/// The info with the suspicion of wrong credentials set or cleared for the network `ssid`: in the
/// wireless interface if it is on that network, and in the first known network of that SSID.
[[nodiscard]] OrvaNetworkInfo updateCredentialsSuspect(OrvaNetworkInfo info, const QString& ssid,
                                                       bool suspect);

/// A backend's snapshot with the worker's own fields taken from `published`. A field that is absent
/// there becomes absent.
[[nodiscard]] OrvaNetworkInfo withWorkerFields(OrvaNetworkInfo snapshot,
                                               const OrvaNetworkInfo& published);

/// The published info while the device shuts down: connected interfaces are in between, and no
/// network is known. Leaves the overall state to be calculated.
[[nodiscard]] OrvaNetworkInfo shuttingDown(OrvaNetworkInfo info);

/// The info after a shutdown that was called off: those of the interfaces `marked` that are in
/// between are connected again. Leaves the overall state and that of the soft access points to be
/// calculated.
[[nodiscard]] OrvaNetworkInfo shutdownCancelled(OrvaNetworkInfo info, const QStringList& marked);

/// One entry for each network of the profile, with its SSID.
[[nodiscard]] OrvaList<OrvaNetworkWirelessInterface>
knownNetworks(const OrvaNetworkProfile& profile);
