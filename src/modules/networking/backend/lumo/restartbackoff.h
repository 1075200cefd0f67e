// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QVector>

/// The wait before a service that was lost is started again, so that one that crashes at every
/// start does not keep everybody busy.
///
/// Single losses are answered at once. The third loss within 10 s makes the restart wait 1 s, and
/// each further one doubles the wait, up to 30 s, until the service has lived for 10 s.
class RestartBackoff
{
public:
    /// The milliseconds to wait after a loss at the time `now` (monotonic, in milliseconds).
    [[nodiscard]] int afterLoss(qint64 now);

private:
    QVector<qint64> m_losses;
    int m_delay = 0;
};
