// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSet>
#include <QString>

#include <optional>

/// The addresses and routes that dhcpcd has configured on an interface, for the case that it was
/// killed and cannot take them back. They bear its marks and were not there before it: addresses
/// without a prefix route of the kernel's, and routes of the protocols dhcp and ra.
class EngineTraces
{
public:
    /// An engine is about to begin on the interface of that kernel index: what is there now is
    /// somebody else's, unless a former engine's traces have not been removed.
    void begin(int index);
    /// The engine has set this IPv4 address, which bears no mark where its prefix has 32 bits.
    void know(const QString& address) { m_known.insert(address); }
    /// Takes away what the engine has left; a failure is logged. No engine runs any more.
    void remove();

private:
    int m_index = 0; ///< 0: no engine has begun
    QSet<QString> m_foreign;
    QSet<QString> m_known;
};
