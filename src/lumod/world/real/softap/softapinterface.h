// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/kernel/kernel.h"
#include "world/real/realsettings.h"

/// The kernel's interface of the soft access point, on the radio of the wireless one. It is made
/// where there is none. Failures are for a person.
class SoftApInterface
{
public:
    /// Both outlive it.
    SoftApInterface(Kernel& kernel, const RealSettings& settings);

    /// There is a radio to carry it.
    [[nodiscard]] bool exists() const;
    [[nodiscard]] KernelLink link() const { return m_kernel.link(m_settings.softAp); }
    /// The one that it is to have: `wanted`, or one beside the radio's when that is empty.
    [[nodiscard]] QString hardwareAddress(const QString& wanted) const;

    /// Sets the radio's own interface up; false where it cannot be, or is not there.
    [[nodiscard]] bool wakeRadio();
    /// Has it be there, and have that hardware address.
    [[nodiscard]] Result<> prepare(const QString& wanted);
    /// Has it have this IPv4 address and no other.
    [[nodiscard]] Result<> setAddress(const QString& address, int prefix);
    void removeAddress();
    /// Removes it where it was made here.
    void remove();
    /// Removes that of a lumod that was killed.
    void clearUp();

private:
    Kernel& m_kernel;
    const RealSettings& m_settings;
};
