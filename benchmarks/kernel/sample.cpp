// SPDX-License-Identifier: Apache-2.0
// Measures one sample of the Wi-Fi watchdog: a lookup with its counters, on the loopback interface.
#include "watchdog/netlinkinfo.h"

#include "figures.h"

#include <QElapsedTimer>
#include <QString>

int main()
{
    constexpr std::size_t count = 10000;
    NetLinkInfo info;
    std::vector<qint64> times(count);
    for (qint64& time : times) {
        QElapsedTimer timer;
        timer.start();
        const NetLinkInterface link = info.getInterface(QStringLiteral("lo"));
        if (!link.isValid() || !link.isLowerUp() || link.getTxPackets() != link.getRxPackets())
            return 1;
        time = timer.nsecsElapsed();
    }
    printPercentiles("watchdog sample", times);
    return 0;
}
