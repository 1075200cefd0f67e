// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/worldtypes.h"

#include <QByteArray>

/// The place at which a soft access point runs.
struct SoftApPlace
{
    QString interface;
    QString directory; ///< for sockets and leases
    QString country;   ///< where the settings name none; empty: as the radio has it
    int channel = 1;
    bool announcesPage = false; ///< stations are told of a page at its address
    bool takesNames = false;    ///< every name in the world is its address
};

/// The text of hostapd's configuration file. It may hold the pass phrase.
[[nodiscard]] QByteArray hostapdConfiguration(const SoftApSettings& settings,
                                              const SoftApPlace& place);

/// The text of dnsmasq's configuration file: addresses for the stations, and names: the settings'
/// domain is the device's own address, and so is any other where the place takes them; else it is
/// refused. A range of addresses that is not in
/// the network gives way to one that is.
[[nodiscard]] QByteArray dnsmasqConfiguration(const SoftApSettings& settings,
                                              const SoftApPlace& place);

/// The directory in which hostapd makes its control socket, which has the interface's name.
[[nodiscard]] QString hostapdDirectory(const QString& runtimeDirectory);

/// A hardware address for the access point, beside that of its radio's own interface: a local one,
/// and always the same.
[[nodiscard]] QString hardwareAddressBeside(const QString& mac);
