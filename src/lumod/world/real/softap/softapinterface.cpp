// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/softapinterface.h"

#include "log.h"
#include "world/real/kernel/interfacechanges.h"
#include "world/real/softap/softapconfiguration.h"

SoftApInterface::SoftApInterface(Kernel& kernel, const RealSettings& settings)
    : m_kernel(kernel)
    , m_settings(settings)
{
}

bool SoftApInterface::exists() const
{
    return !m_settings.softAp.isEmpty() &&
           (m_kernel.link(m_settings.wireless).index != 0 || link().index != 0);
}

QString SoftApInterface::hardwareAddress(const QString& wanted) const
{
    if (!wanted.isEmpty())
        return wanted;
    const auto radio = m_kernel.link(m_settings.wireless);
    return radio.index != 0 ? hardwareAddressBeside(radio.mac) : link().mac;
}

bool SoftApInterface::wakeRadio()
{
    const auto radio = m_kernel.link(m_settings.wireless);
    return radio.index != 0 && (radio.up || setInterfaceUp(radio.index));
}

Result<> SoftApInterface::prepare(const QString& wanted)
{
    const auto& name = m_settings.softAp;
    const auto address = hardwareAddress(wanted);
    if (link().index == 0) {
        const auto radio = m_kernel.link(m_settings.wireless).index;
        const auto made = makeAccessPointInterface(radio, name, address);
        if (!made)
            return Failure{QStringLiteral("cannot make %1: %2").arg(name, made.why())};
        m_kernel.refresh();
    }
    if (link().mac == address)
        return {};
    const auto set = setHardwareAddress(link().index, address);
    if (set)
        return {};
    return Failure{QStringLiteral("%1 does not take its address: %2").arg(name, set.why())};
}

Result<> SoftApInterface::setAddress(const QString& address, int prefix)
{
    if (const auto set = setOnlyAddress(link(), address, prefix); !set)
        return Failure{
            QStringLiteral("%1 does not take %2: %3").arg(m_settings.softAp, address, set.why())};
    m_kernel.refresh();
    return {};
}

void SoftApInterface::removeAddress()
{
    if (link().index != 0)
        static_cast<void>(setOnlyAddress(link(), QString(), 0));
}

void SoftApInterface::remove()
{
    if (link().ours)
        removeAccessPointInterface(link().index);
}

void SoftApInterface::clearUp()
{
    if (!link().ours)
        return;
    qCInfo(lcLumod) << "Removing the soft AP's interface of a lumod that was killed";
    remove();
    m_kernel.refresh();
}
