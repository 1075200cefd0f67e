#include "network/networkpaths.h"
#include "networking.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "softap/softapactivation.h"
#include "softap/softapcheck.h"
#include "softap/softapdeadline.h"
#include "softap/softapsettings.h"
#include "softap/softapstatus.h"

#include <utility>

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;
using Request = OrvaNetworkProfileSoftApRequest;

/// The soft-AP interface of a request that names none.
QString defaultInterface()
{
    return QStringLiteral("uap0");
}

Request withInterface(Request request)
{
    Settings settings = request.settings();
    if (!settings.__contains(Settings::ApInterface())) {
        settings.setApInterface(defaultInterface());
        request.setSettings(settings);
    }
    return request;
}

/// A revocation is a request record or the plain name of the requester.
Request revocationOf(const OrvaValue& value)
{
    if (value.typeKey() != OrvaValue::String())
        return value.networkSoftApRequest();
    Request named;
    named.setName(value.string_());
    return named;
}

CMError unknownInterface(const QString& interface)
{
    const QString text = QStringLiteral("Unknown SoftAp interface: ") + interface;
    LOG4CPLUS_WARN(networkingLogger(), text);
    return CMError(QStringLiteral("Error"), text);
}

void failAll(const QVector<CMSetDataRequest>& requests, const char* text)
{
    for (const CMSetDataRequest& request : requests) {
        LOG4CPLUS_WARN(networkingLogger(), text);
        request.fail(CMError(QStringLiteral("Error"), TrString(text)));
    }
}

/// What is wrong with the time-out that a request asks for; empty when nothing is.
CMError timeoutError(const Request& request, const char* signature)
{
    if (request.timeout() > longestSoftApTimeoutMs) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Requested timeout too large (" << request.timeout() << ")");
        return networkingError(signature, "Timeout too large");
    }
    if (request.holdSoftAp() && request.timeout() < 1) {
        LOG4CPLUS_WARN(networkingLogger(), "Requested hold without timeout");
        return networkingError(signature, "Requested hold without timeout");
    }
    return {};
}

} // namespace

void Networking::on_requestSoftAp_req(const CMSetDataRequest& request)
{
    Request softAp = withInterface(request.value().networkSoftApRequest());
    LOG4CPLUS_INFO(networkingLogger(), "Received request SoftAp, name: " << softAp.name());
    if (!m_started) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Networking isn't started yet, discarding softap request command!");
        request.fail(networkingError(Q_FUNC_INFO, "Networking is not started."));
        return;
    }
    const CMError error = timeoutError(softAp, Q_FUNC_INFO);
    if (!error.isEmpty()) {
        request.fail(error);
        return;
    }
    const QString interface = softAp.settings().apInterface();
    if (!m_softApInterfaces.contains(interface)) {
        request.fail(unknownInterface(interface));
        return;
    }
    if (const char* refusal = softApRefusal(softAp)) {
        LOG4CPLUS_WARN(networkingLogger(), "Refused a request for a soft AP: " << refusal);
        request.fail(networkingError(Q_FUNC_INFO, refusal));
        return;
    }
    softAp.setSettings(normalSoftApSettings(softAp.settings()));
    softAp.setTimeout(softApDeadline(m_clock(), softAp.timeout()));
    // The request waits before the backend is asked, whose interface may come up at once.
    m_pendingSoftApRequests[interface].append(request);
    if (setSoftAp(softAp, true))
        return;
    m_pendingSoftApRequests[interface].removeLast();
    request.answer();
}

const char* Networking::softApRefusal(const Request& request) const
{
    if (request.name().size() > longestSoftApRequester)
        return "SoftAp requester name needs to have at most 64 characters";
    const SoftApTable table = m_softApRequests.value(request.settings().apInterface());
    // The device's own soft AP must not depend on how many others ask.
    if (table.size() >= mostSoftApRequesters && !table.contains(request.name()) &&
        request.name() != name())
        return "SoftAp interface has 64 requesters already";
    return softApSettingsError(request.settings());
}

void Networking::on_revokeSoftAp_req(const CMSetDataRequest& request)
{
    const Request revocation = withInterface(revocationOf(request.value()));
    LOG4CPLUS_INFO(networkingLogger(), "Received revoke SoftAp, name: " << revocation.name());
    if (!m_started) {
        LOG4CPLUS_WARN(networkingLogger(),
                       "Networking isn't started yet, discarding softap revoke command!");
        request.fail(networkingError(Q_FUNC_INFO, "Networking is not started."));
        return;
    }
    const QString interface = revocation.settings().apInterface();
    if (!m_softApInterfaces.contains(interface)) {
        request.fail(unknownInterface(interface));
        return;
    }
    setSoftAp(revocation, false);
    answerPendingSoftAp(interface, networkingError(Q_FUNC_INFO, "SoftAp request revoked"));
    request.answer();
}

bool Networking::setSoftAp(const Request& request, bool enable)
{
    const QString interface = request.settings().apInterface();
    SoftApTable& table = m_softApRequests[interface];
    if (enable)
        table.set(request);
    else
        table.remove(request.name());
    scheduleSoftApTimeoutTimer();
    const bool changed = table.isEmpty() ? stopSoftAp(request.settings()) : updateSoftAp(interface);
    publishSoftApRequests();
    return changed;
}

bool Networking::updateSoftAp(const QString& interface)
{
    const Settings current = m_activeSoftApSettings.value(interface);
    const SoftApFold fold = foldSoftApRequests(current, m_softApSettings.value(interface),
                                               m_softApRequests.value(interface).requests());
    m_activeSoftApSettings.insert(interface, fold.settings);
    const bool staysHeld = m_softApHold.contains(interface) && fold.hold;
    if (fold.hold)
        m_softApHold.insert(interface);
    else
        m_softApHold.remove(interface);
    if (staysHeld && fold.settings != current)
        LOG4CPLUS_INFO(networkingLogger(), "Cannot Start/Update softAp on interface "
                                               << interface << ". SoftAp is on hold.");
    // What was recorded in a hold differs from what was sent, and goes out when the hold has ended.
    if (staysHeld || fold.settings == m_sentSoftApSettings.value(interface))
        return false;
    LOG4CPLUS_INFO(networkingLogger(), "Starting/updating SoftAp on interface " << interface);
    LOG4CPLUS_DEBUG(networkingLogger(),
                    "New SoftAp settings for interface " << interface << ": " << fold.settings);
    m_wifiResource.requestWifiResource(WifiResource::SoftAp, true);
    m_sentSoftApSettings.insert(interface, fold.settings);
    m_lowlevel->startSoftAp(fold.settings);
    return true;
}

bool Networking::stopSoftAp(const Settings& settings)
{
    const QString interface = settings.apInterface();
    const bool runs = !m_activeSoftApSettings.value(interface).isEmpty();
    if (runs) {
        LOG4CPLUS_INFO(networkingLogger(), "Stopping SoftAp on interface " << interface);
        m_activeSoftApSettings.insert(interface, Settings());
        m_sentSoftApSettings.remove(interface);
        m_softApHold.remove(interface);
        m_lowlevel->stopSoftAp(settings);
    }
    if (!isSoftApRunning())
        m_wifiResource.requestWifiResource(WifiResource::SoftAp, false);
    return runs;
}

bool Networking::isSoftApRunning() const
{
    return std::any_of(m_activeSoftApSettings.begin(), m_activeSoftApSettings.end(),
                       [](const Settings& settings) { return !settings.isEmpty(); });
}

void Networking::answerPendingSoftAp(const QString& interface, const CMError& error)
{
    const auto pending = m_pendingSoftApRequests.take(interface);
    for (const CMSetDataRequest& request : pending) {
        if (error.isEmpty())
            request.answer();
        else
            request.fail(error);
    }
}

void Networking::publishSoftApRequests()
{
    if (std::exchange(m_softApRequestsChanged, true))
        return;
    QMetaObject::invokeMethod(this, &Networking::publishSoftApRequestsNow, Qt::QueuedConnection);
}

void Networking::publishSoftApRequestsNow()
{
    m_softApRequestsChanged = false;
    OrvaValue value;
    value.setSoftApRequests(softApRequestStatuses(m_softApRequests, m_softApLinks, m_clock()));
    m_softApRequestsNode->setValue(value);
}

void Networking::clearSoftAp()
{
    m_softApRequests.clear();
    m_softApHold.clear();
    m_sentSoftApSettings.clear();
    scheduleSoftApTimeoutTimer();
    const auto active = std::exchange(m_activeSoftApSettings, {});
    for (const Settings& settings : active) {
        if (!settings.isEmpty())
            m_lowlevel->stopSoftAp(settings);
    }
    const auto pending = std::exchange(m_pendingSoftApRequests, {});
    for (const QVector<CMSetDataRequest>& requests : pending)
        failAll(requests, "Cannot start softAp, stopping all softAps");
    publishSoftApRequests();
}

void Networking::scheduleSoftApTimeoutTimer()
{
    m_softApTimeoutTimer.stop();
    m_nextExpiringSoftApRequest = nextExpiringSoftApRequest(m_softApRequests);
    if (m_nextExpiringSoftApRequest.isEmpty())
        return;
    const qint32 remaining = millisecondsTo(m_nextExpiringSoftApRequest.timeout(), m_clock());
    m_softApTimeoutTimer.start(qMax(0, remaining));
}

void Networking::on_softApTimeoutTimer_timeout()
{
    if (m_nextExpiringSoftApRequest.isEmpty())
        return;
    if (millisecondsTo(m_nextExpiringSoftApRequest.timeout(), m_clock()) > 0) {
        scheduleSoftApTimeoutTimer(); // The clock and the timer need not agree to the millisecond.
        return;
    }
    const Request expired = std::exchange(m_nextExpiringSoftApRequest, {});
    LOG4CPLUS_INFO(networkingLogger(), "SoftAp settings timed out: " << expired.name());
    on_revokeSoftAp_req(softApActivation(OrvaNetworkRevokeSoftApPath(), expired));
}

OrvaNetworkState Networking::calculateSoftApState() const
{
    const auto states = m_softApLinks.values();
    if (states.contains(OrvaNetworkState::Connected))
        return OrvaNetworkState::Connected;
    const bool inBetween = std::any_of(states.begin(), states.end(), [](OrvaNetworkState state) {
        return state != OrvaNetworkState::Disconnected;
    });
    return inBetween ? OrvaNetworkState::Disconnecting : OrvaNetworkState::Disconnected;
}

void Networking::on_lowlevel_StationConnected(const QString& mac)
{
    LOG4CPLUS_INFO(networkingLogger(), "Got connected softap station: " << mac);
    QStringList stations = m_connectedStationsNode->value().stringList();
    if (!stations.contains(mac.toUpper()))
        stations << mac.toUpper();
    setConnectedStations(stations);
}

void Networking::on_lowlevel_StationDisconnected(const QString& mac)
{
    LOG4CPLUS_INFO(networkingLogger(), "Got disconnected softap station: " << mac);
    QStringList stations = m_connectedStationsNode->value().stringList();
    stations.removeAll(mac.toUpper());
    setConnectedStations(stations);
}

void Networking::setConnectedStations(const QStringList& macs)
{
    m_connectedStationsNode->setValue(toValue(macs));
}
