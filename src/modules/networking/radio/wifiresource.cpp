// SPDX-License-Identifier: Apache-2.0
#include "radio/wifiresource.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "networkinglog.h"
#include "power/powerrecords.h"

#include <algorithm>

namespace {

/// The time for which the radio stays on after the last feature has left.
constexpr int releaseDelayMs = 5000;

QString toLog(const QSet<WifiResource::ResourceRequestSubmodule>& submodules)
{
    QList<int> sorted(submodules.begin(), submodules.end());
    std::sort(sorted.begin(), sorted.end());
    QStringList numbers;
    for (const int number : std::as_const(sorted))
        numbers << QString::number(number);
    return QStringLiteral("QSet(%1)").arg(numbers.join(QStringLiteral(", ")));
}

void askPowerManager(OrvaPowerModuleActions action)
{
    OrvaPowerManagerResourceRequest request;
    request.setModuleName(OrvaNetworkName());
    request.setResource(OrvaPowerManagerResources::Wifi);
    request.setAction(action);
    CMRoot()->invoke(OrvaPowerManagerResourceRequestPath(), request, CMReply<QVariant>::create());
}

} // namespace

WifiResource::WifiResource(QObject* parent)
    : QObject(parent)
{
    m_releaseWifiResourceTimer.setSingleShot(true);
    m_releaseWifiResourceTimer.setInterval(releaseDelayMs);
    connect(&m_releaseWifiResourceTimer, &QTimer::timeout, this,
            &WifiResource::on_releaseWifiResource_timeout);
}

void WifiResource::requestWifiResource(ResourceRequestSubmodule submodule, bool enable)
{
    LOG4CPLUS_DEBUG(networkingLogger(), "submodule " << submodule << " enable " << enable);
    if (enable)
        m_activeSubmodules.insert(submodule);
    else
        m_activeSubmodules.remove(submodule);
    LOG4CPLUS_DEBUG(networkingLogger(), "Active submodules: " << toLog(m_activeSubmodules));
    if (m_activeSubmodules.isEmpty()) {
        m_releaseWifiResourceTimer.start();
        return;
    }
    m_releaseWifiResourceTimer.stop();
    LOG4CPLUS_DEBUG(networkingLogger(), "Requesting resources");
    askPowerManager(OrvaPowerModuleActions::Request);
}

void WifiResource::on_releaseWifiResource_timeout()
{
    LOG4CPLUS_DEBUG(networkingLogger(), "Releasing resources");
    askPowerManager(OrvaPowerModuleActions::Release);
}
