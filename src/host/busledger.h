// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

#include <QByteArray>
#include <QHash>
#include <QMutex>

/// The bounds of what callers may have open at the host.
struct BusLimits
{
    /// Requests of one caller that are not answered yet.
    int requests = 1024;
    /// Bytes of one message. No value within the border's limits is larger on the wire.
    qint64 message = 4 << 20;
    /// Bytes of one caller's open requests.
    qint64 caller = 8 << 20;
    /// Bytes of all open requests, beyond which a caller may have `share` bytes open and no more.
    qint64 all = 32 << 20;
    qint64 share = 64 << 10;
    /// Bytes of answers that the bus has not taken yet, beyond which nobody is served.
    qint64 unsent = 32 << 20;
};

/// Counts what each caller has open. Safe to use from several threads.
class BusLedger
{
public:
    explicit BusLedger(const BusLimits& limits = BusLimits());
    Q_DISABLE_COPY(BusLedger)

    [[nodiscard]] const BusLimits& limits() const { return m_limits; }

    /// Counts a request of that many bytes in. Fails where it would pass a limit; nothing is
    /// counted then.
    [[nodiscard]] OrvaResult<void> enter(const QByteArray& caller, qint64 bytes);
    /// Takes a request that was counted in out again.
    void leave(const QByteArray& caller, qint64 bytes);

    /// The number of callers that have something open.
    [[nodiscard]] int callers() const;

private:
    struct Account
    {
        int requests = 0;
        qint64 bytes = 0;
    };

    const BusLimits m_limits;
    mutable QMutex m_mutex;
    QHash<QByteArray, Account> m_accounts;
    qint64 m_bytes = 0;
};
