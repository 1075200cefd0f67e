// SPDX-License-Identifier: Apache-2.0
#include "softap/softaps.h"

#include "monotonicclock.h"
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "softap/softapactivation.h"
#include "softap/softapcheck.h"
#include "softap/softapdeadline.h"
#include "softap/softapsettings.h"
#include "softap/softapstatus.h"

#include <utility>

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;
using Request = OrvaNetworkProfileSoftApRequest;

CMError revocationError(const char* text)
{
    return networkingError("void Networking::on_revokeSoftAp_req(const CMSetDataRequest&)", text);
}

} // namespace

SoftAps::SoftAps(const CMNodes& nodes, Networking_LowLevel& backend, const NetworkingLife& life,
                 const QString& ownName, QObject* parent)
    : QObject(parent)
    , m_lowlevel(backend)
    , m_life(life)
    , m_ownName(ownName)
    , m_stations(backend, valueNode(nodes, OrvaNetworkConnectedSoftApStationsPath()))
    , m_softApRequestsNode(valueNode(nodes, OrvaNetworkSoftApRequestsPath()))
{
    m_softApTimeoutTimer.setSingleShot(true);
    m_softApTimeoutTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_lowlevel, &Networking_LowLevel::SoftApError, this,
            &SoftAps::on_lowlevel_SoftApError);
    connect(&m_softApTimeoutTimer, &QTimer::timeout, this, &SoftAps::on_softApTimeoutTimer_timeout);
    publishSoftApRequestsNow();
}

void SoftAps::readSoftApConfiguration(const QString& mac)
{
    const QString defaultSsid = readValue(OrvaNetworkSoftApDefaultSsidSettingsPath()).string_();
    const QString ownSsid = ownSoftApSsid(defaultSsid, mac);
    if (!ownSsid.startsWith(defaultSsid + QLatin1Char('_')))
        LOG4CPLUS_WARN(networkingLogger(),
                       "The default SSID of the soft AP is too long, cut to: " << ownSsid);
    const auto configuration =
        readValue(OrvaNetworkSoftApConfigSettingsPath()).networkProfile().softApSettings();
    for (const Settings& configured : configuration) {
        Settings settings = normalSoftApSettings(configured);
        if (settings.ssid() == defaultSsid)
            settings.setSsid(ownSsid);
        m_softAps[settings.apInterface()].configured = settings;
        if (!m_softApInterfaces.contains(settings.apInterface()))
            m_softApInterfaces.append(settings.apInterface());
    }
}

void SoftAps::on_requestSoftAp_req(const CMSetDataRequest& request)
{
    Request softAp = softApRequestOf(request.value());
    LOG4CPLUS_INFO(networkingLogger(), "Received request SoftAp, name: " << softAp.name());
    if (const auto taken = check(softAp); !taken)
        return request.fail(taken.error());
    softAp.setSettings(normalSoftApSettings(softAp.settings()));
    // The request waits before the backend is asked, whose interface may come up at once.
    const QString interface = softAp.settings().apInterface();
    m_softAps[interface].pending.append(request);
    const bool changed = setSoftAp(softAp, true);
    bind(request, softAp);
    if (changed)
        return;
    m_softAps[interface].pending.removeLast();
    request.answer();
}

void SoftAps::bind(const CMSetDataRequest& request, const Request& softAp)
{
    const auto caller = request.caller();
    if (!softAp.bound() || !caller)
        return;
    const auto binding = std::make_shared<QObject>();
    m_softAps[softAp.settings().apInterface()].table.bind(softAp.name(), binding);
    caller->whenGone(binding.get(), [this, softAp] {
        LOG4CPLUS_INFO(networkingLogger(), "The client has gone, SoftAp, name: " << softAp.name());
        on_revokeSoftAp_req(softApActivation(OrvaNetworkRevokeSoftApPath(), softAp));
    });
}

OrvaResult<void> SoftAps::check(const Request& request) const
{
    if (!m_life.isStarted()) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Networking isn't started yet, discarding softap request command!");
        return softApRequestError("Networking is not started.");
    }
    if (auto timed = checkSoftApTimeout(request); !timed)
        return timed;
    const QString interface = request.settings().apInterface();
    if (auto known = checkInterface(interface); !known)
        return known;
    // The device's own soft AP must not depend on how many others ask.
    auto fits = request.name() == m_ownName
                    ? OrvaResult<void>()
                    : checkSoftApRequester(request.name(), m_softAps.value(interface).table);
    if (fits)
        fits = checkSoftApSettings(request.settings());
    if (!fits)
        LOG4CPLUS_WARN(networkingLogger(), "Refused a request for a soft AP: " << fits.why());
    return fits;
}

OrvaResult<void> SoftAps::checkInterface(const QString& interface) const
{
    if (m_softApInterfaces.contains(interface))
        return {};
    const QString text = QStringLiteral("Unknown SoftAp interface: ") + interface;
    LOG4CPLUS_WARN(networkingLogger(), text);
    return networkingFailure(text);
}

void SoftAps::on_revokeSoftAp_req(const CMSetDataRequest& request)
{
    const Request revocation = softApRevocationOf(request.value());
    LOG4CPLUS_INFO(networkingLogger(), "Received revoke SoftAp, name: " << revocation.name());
    if (!m_life.isStarted()) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Networking isn't started yet, discarding softap revoke command!");
        return request.fail(revocationError("Networking is not started."));
    }
    const QString interface = revocation.settings().apInterface();
    if (const auto known = checkInterface(interface); !known)
        return request.fail(known.error());
    setSoftAp(revocation, false);
    answerPending(interface, revocationError("SoftAp request revoked"));
    request.answer();
}

bool SoftAps::setSoftAp(const Request& request, bool enable)
{
    const QString interface = request.settings().apInterface();
    SoftApTable& table = m_softAps[interface].table;
    if (enable)
        table.set({request, softApDeadline(monotonicMs(), request.timeout())});
    else
        table.remove(request.name());
    scheduleSoftApTimeoutTimer();
    const bool changed = table.isEmpty() ? stopSoftAp(request.settings()) : updateSoftAp(interface);
    publishSoftApRequests();
    return changed;
}

bool SoftAps::updateSoftAp(const QString& interface)
{
    SoftAp& softAp = m_softAps[interface];
    const SoftApFold fold = foldSoftApRequests(softAp.recorded, softAp.configured, softAp.table);
    const bool changed = std::exchange(softAp.recorded, fold.settings) != fold.settings;
    const bool staysHeld = std::exchange(softAp.hold, fold.hold) && fold.hold;
    if (staysHeld && changed)
        LOG4CPLUS_INFO(networkingLogger(), "Cannot Start/Update softAp on interface "
                                               << interface << ". SoftAp is on hold.");
    // A change recorded in a hold differs from what was sent, and goes out when the hold has ended.
    if (staysHeld || (fold.settings == softAp.sent && !softAp.failed))
        return false;
    LOG4CPLUS_INFO(networkingLogger(), "Starting/updating SoftAp on interface " << interface);
    LOG4CPLUS_DEBUG(networkingLogger(),
                    "New SoftAp settings for interface " << interface << ": " << fold.settings);
    Q_EMIT wifiNeeded(true);
    softAp.sent = fold.settings;
    softAp.failed = false;
    m_lowlevel.startSoftAp(fold.settings);
    return true;
}

bool SoftAps::stopSoftAp(const Settings& settings)
{
    const QString interface = settings.apInterface();
    const bool runs = m_softAps[interface].isRunning();
    if (runs) {
        LOG4CPLUS_INFO(networkingLogger(), "Stopping SoftAp on interface " << interface);
        m_softAps[interface].setStopped();
        m_lowlevel.stopSoftAp(settings);
    }
    if (std::none_of(m_softAps.cbegin(), m_softAps.cend(),
                     [](const SoftAp& softAp) { return softAp.isRunning(); }))
        Q_EMIT wifiNeeded(false);
    return runs;
}

void SoftAps::answerPending(const QString& interface, const OrvaResult<void>& outcome)
{
    const auto pending = std::exchange(m_softAps[interface].pending, {});
    for (const CMSetDataRequest& request : pending) {
        if (outcome)
            request.answer();
        else
            request.fail(outcome.error());
    }
}

void SoftAps::failPending(const QString& interface, const char* text)
{
    const auto pending = std::exchange(m_softAps[interface].pending, {});
    for (const CMSetDataRequest& request : pending) {
        LOG4CPLUS_WARN(networkingLogger(), text);
        request.fail(networkingFailure(TrString(text)));
    }
}

void SoftAps::clearSoftAp()
{
    QVector<Settings> stopped;
    for (SoftAp& softAp : m_softAps) {
        softAp.table = {};
        if (softAp.isRunning())
            stopped << softAp.recorded;
        softAp.setStopped();
    }
    scheduleSoftApTimeoutTimer();
    for (const Settings& settings : std::as_const(stopped))
        m_lowlevel.stopSoftAp(settings);
    const auto interfaces = m_softAps.keys();
    for (const QString& interface : interfaces)
        failPending(interface, "Cannot start softAp, stopping all softAps");
    publishSoftApRequests();
}

void SoftAps::scheduleSoftApTimeoutTimer()
{
    m_softApTimeoutTimer.stop();
    if (const auto next = nextExpiringSoftApRequest(m_softAps))
        m_softApTimeoutTimer.start(static_cast<int>(qMax(qint64{0}, *next->due - monotonicMs())));
}

void SoftAps::on_softApTimeoutTimer_timeout()
{
    const auto next = nextExpiringSoftApRequest(m_softAps);
    // The clock and the timer need not agree to the millisecond.
    if (!next || *next->due > monotonicMs())
        return scheduleSoftApTimeoutTimer();
    LOG4CPLUS_INFO(networkingLogger(), "SoftAp settings timed out: " << next->request.name());
    on_revokeSoftAp_req(softApActivation(OrvaNetworkRevokeSoftApPath(), next->request));
}

void SoftAps::setLinkStatus(const QString& interface, bool up)
{
    LOG4CPLUS_INFO(networkingLogger(), "Softap state changed: " << (up ? "up" : "down"));
    setLink(interface, up ? OrvaNetworkState::Connected : OrvaNetworkState::Disconnected);
    if (up) {
        m_softAps[interface].failed = false;
        answerPending(interface);
    }
    m_stations.clear();
}

void SoftAps::on_lowlevel_SoftApError(const QString& interface, const QString& description)
{
    LOG4CPLUS_WARN(networkingLogger(),
                   "No SoftAp on interface " << interface << ": " << description);
    m_softAps[interface].failed = true;
    answerPending(interface, CMError(QStringLiteral("Error"), description));
}

void SoftAps::setDisconnecting(const QString& interface)
{
    setLink(interface, OrvaNetworkState::Disconnecting);
}

void SoftAps::setLink(const QString& interface, OrvaNetworkState state)
{
    m_softAps[interface].link = state;
    Q_EMIT stateChanged(calculateSoftApState());
    publishSoftApRequests();
}

QStringList SoftAps::disconnectingInterfaces() const
{
    QStringList names;
    for (auto softAp = m_softAps.begin(); softAp != m_softAps.end(); ++softAp) {
        if (softAp->link == OrvaNetworkState::Disconnecting)
            names << softAp.key();
    }
    return names;
}

OrvaNetworkState SoftAps::calculateSoftApState() const
{
    OrvaNetworkState all = OrvaNetworkState::Disconnected;
    for (const SoftAp& softAp : m_softAps) {
        if (softAp.link == OrvaNetworkState::Connected)
            return OrvaNetworkState::Connected;
        if (softAp.link != OrvaNetworkState::Disconnected)
            all = OrvaNetworkState::Disconnecting;
    }
    return all;
}

void SoftAps::publishSoftApRequests()
{
    if (std::exchange(m_softApRequestsChanged, true))
        return;
    QMetaObject::invokeMethod(this, &SoftAps::publishSoftApRequestsNow, Qt::QueuedConnection);
}

void SoftAps::publishSoftApRequestsNow()
{
    m_softApRequestsChanged = false;
    m_softApRequestsNode->setValue(OrvaValue::of(softApRequestStatuses(m_softAps)));
}
