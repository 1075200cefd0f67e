// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/kernel/kernel.h"

// Changes to the kernel's interfaces. The kernel answers at once; failures are for a person.

/// Sets the interface of that kernel index up.
Result<> setInterfaceUp(int index);

/// Gives the interface a hardware address, for which it is set down.
Result<> setHardwareAddress(int index, const QString& mac);

/// Makes an interface for an access point, of that name and hardware address, on the radio of the
/// interface `radio`, and marks it. Not every driver takes the address.
Result<> makeAccessPointInterface(int radio, const QString& name, const QString& mac);

/// Removes an interface that `makeAccessPointInterface` has made.
void removeAccessPointInterface(int index);

/// Has the interface have this IPv4 address and no other; an empty one: none.
Result<> setOnlyAddress(const KernelLink& link, const QString& address, int prefix);
