// SPDX-License-Identifier: Apache-2.0
#include "busledger.h"

#include <QMutexLocker>

namespace {

/// The cost of an open request beside its bytes.
constexpr qint64 overhead = 1024;

} // namespace

BusLedger::BusLedger(const BusLimits& limits)
    : m_limits(limits)
{
}

OrvaResult<void> BusLedger::enter(const QByteArray& caller, qint64 bytes)
{
    const qint64 cost = bytes + overhead;
    const QMutexLocker locker(&m_mutex);
    const Account before = m_accounts.value(caller);
    if (before.requests >= m_limits.requests)
        return CMError::failed(
            QStringLiteral("the caller has %1 open requests already").arg(before.requests));
    const bool crowded = m_bytes + cost > m_limits.all;
    if (before.bytes + cost > (crowded ? m_limits.share : m_limits.caller))
        return CMError::failed(QStringLiteral("the open requests are too large in all"));
    m_accounts.insert(caller, {before.requests + 1, before.bytes + cost});
    m_bytes += cost;
    return {};
}

void BusLedger::leave(const QByteArray& caller, qint64 bytes)
{
    const qint64 cost = bytes + overhead;
    const QMutexLocker locker(&m_mutex);
    const auto account = m_accounts.find(caller);
    m_bytes -= cost;
    account->bytes -= cost;
    if (--account->requests == 0)
        m_accounts.erase(account);
}

int BusLedger::callers() const
{
    const QMutexLocker locker(&m_mutex);
    return m_accounts.size();
}
