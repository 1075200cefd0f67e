// SPDX-License-Identifier: Apache-2.0
#include "watchdog/wifirestart.h"

#include "watchdog/pinger.h"

#include "core/orva.h"
#include "network/networkpaths.h"

#include <utility>

namespace {

constexpr int shortestIntervalMs = 10000;

/// The translation context of what a request to restart is answered.
constexpr auto requestContext = "void WifiRestart::on_restart_requested(const CMSetDataRequest&)";

ORVA_LOGGER(wifiRestartLogger, "WifiRestart")

/// The node that restarts Wi-Fi; none when the criteria point back at the node that leads here,
/// which would go round without end.
CMPath restartPath(const OrvaNetworkWifiRestartCriteria& criteria)
{
    const CMPath path = criteria.restartActivatePath();
    return path == OrvaNetworkRequestWifiRestartPath() ? CMPath() : path;
}

CMReply<QVariant> invokeRestart(const CMPath& path)
{
    auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(path, OrvaHash(), reply);
    return reply;
}

} // namespace

WifiRestart::WifiRestart(QObject* parent, const QString& interfaceName, const QStringList&)
    : QObject(parent)
    , m_interfaceName(interfaceName)
    , m_checkTimer(this)
{
    connect(&m_checkTimer, &QTimer::timeout, this, &WifiRestart::on_timer_timeout);
    auto* watcher = new CMInitWatcher(this, QStringLiteral("WifiRestart"));
    m_criteria = watcher->newCMValueItem(OrvaNetworkWifiRestartCriteriaPath());
    connect(watcher, &CMInitWatcher::initDone, this, &WifiRestart::on_init_done);
    watcher->done();
}

WifiRestart::~WifiRestart() = default;

void WifiRestart::on_init_done()
{
    connect(m_criteria, &CMValueItem::changed, this,
            [this](const OrvaValue&, const OrvaValue& value) { on_criteria_changed(value); });
    on_criteria_changed(m_criteria->value());
}

void WifiRestart::on_criteria_changed(const OrvaValue& value)
{
    const OrvaNetworkWifiRestartCriteria criteria = value.wifiRestartCriteria();
    if (criteria.checkIntervalMs() < shortestIntervalMs ||
        criteria.restartActivatePath().isEmpty()) {
        LOG4CPLUS_INFO(wifiRestartLogger(), "Wifi restart functionality disabled: " << criteria);
        m_checkTimer.stop();
        return;
    }
    if (!criteria.__contains(criteria.MaxTxIncreaseNoRxIncreaseThreshold())) {
        LOG4CPLUS_WARN(wifiRestartLogger(), "Not a valid wifi restart criteria: " << criteria);
        m_checkTimer.stop();
        return;
    }
    delete m_pinger;
    m_pinger = new Pinger(this, criteria.checkIntervalMs());
    connect(m_pinger, &Pinger::pinged, this, &WifiRestart::gatewayPinged);
    m_checkTimer.start(criteria.checkIntervalMs());
}

LinkSample WifiRestart::takeSample()
{
    const NetLinkInterface interface = m_netLinkInfo.getInterface(m_interfaceName);
    if (!interface.isValid())
        return {};
    return {true, interface.isLowerUp(), interface.getTxPackets(), interface.getRxPackets()};
}

void WifiRestart::on_timer_timeout()
{
    const int threshold = criteria().maxTxIncreaseNoRxIncreaseThreshold();
    const StuckLinkJudgement judgement = judgeSample(m_state, takeSample(), threshold);
    const quint32 oldCount = std::exchange(m_state, judgement.state).stuckCount;
    log(judgement.verdict, oldCount);
    if (judgement.verdict == StuckLinkVerdict::Restart)
        restart();
}

void WifiRestart::log(StuckLinkVerdict verdict, quint32 oldCount) const
{
    const char* const increased =
        "Tx packets increased, but not Rx packets, incrementing counter to: ";
    switch (verdict) {
    case StuckLinkVerdict::NoInterface:
        LOG4CPLUS_WARN(wifiRestartLogger(), "No such interface: " << m_interfaceName);
        break;
    case StuckLinkVerdict::NotConnected:
        LOG4CPLUS_DEBUG(wifiRestartLogger(),
                        "Interface is not connected (lower up), skipping wifi restart checks...");
        break;
    case StuckLinkVerdict::NoCounters:
        LOG4CPLUS_WARN(wifiRestartLogger(),
                       "Couldn't fetch number of packets from interface: " << m_interfaceName);
        break;
    case StuckLinkVerdict::CountersDecreased:
        LOG4CPLUS_WARN(wifiRestartLogger(),
                       "Number of transferred packets DECREASED, assuming interface was "
                       "removed and readded!");
        break;
    case StuckLinkVerdict::Active:
        if (oldCount != 0)
            LOG4CPLUS_INFO(wifiRestartLogger(),
                           "Wifi is active (both tx/rx increasing), resetting counter "
                           "back to zero from "
                               << oldCount);
        else
            LOG4CPLUS_DEBUG(wifiRestartLogger(),
                            "Wifi is active (both tx/rx increasing), counter at zero");
        break;
    case StuckLinkVerdict::Stuck:
        LOG4CPLUS_INFO(wifiRestartLogger(), increased << oldCount + 1);
        break;
    case StuckLinkVerdict::Restart:
        LOG4CPLUS_INFO(wifiRestartLogger(), increased << oldCount + 1);
        LOG4CPLUS_WARN(wifiRestartLogger(),
                       "Max number of tx increase but no rx increase reached, removing & "
                       "readding interface: "
                           << m_interfaceName);
        break;
    }
}

void WifiRestart::restart() const
{
    const CMPath path = criteria().restartActivatePath();
    if (path.isEmpty())
        qt_assert_x("WifiRestart", "restartActivatePath is not defined!", __FILE__, __LINE__);
    invokeRestart(path);
}

void WifiRestart::on_restart_requested(const CMSetDataRequest& request)
{
    const CMPath path = restartPath(criteria());
    if (path.isEmpty()) {
        LOG4CPLUS_WARN(wifiRestartLogger(), "No wifi restart path is defined, can't restart wifi");
        return request.fail(
            CMError(QStringLiteral("Networking"),
                    TrString(trExtractContext(requestContext), "No wifi restart path defined")));
    }
    request.answerAs(invokeRestart(path));
}

OrvaNetworkWifiRestartCriteria WifiRestart::criteria() const
{
    return m_criteria->value().wifiRestartCriteria();
}
