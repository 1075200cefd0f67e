// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSet>
#include <QString>

/// The addresses and routes that dhcpcd has configured on an interface, for the case that it cannot
/// take them back itself. They bear its marks and were not there before it: addresses
/// without a prefix route of the kernel's, and routes of the protocols dhcp and ra.
class EngineTraces
{
public:
    enum class Family { Ipv4, Both };

    /// An engine is about to begin on the interface of that kernel index: what is there now is
    /// somebody else's, unless a former engine's traces have not been removed. False where the
    /// kernel does not tell what is there, which is logged.
    [[nodiscard]] bool begin(int index);
    /// The engine has set this IPv4 address, which bears no mark where its prefix has 32 bits.
    void know(const QString& address) { m_known.insert(address); }
    /// Takes away what the engine has left of that family; a failure is logged, and where the
    /// kernel does not tell what is there, the next call tries again. Of both only once no engine
    /// runs any more.
    void remove(Family family);

private:
    int m_index = 0; ///< 0: no engine has begun
    QSet<QString> m_foreign;
    QSet<QString> m_known;
};
