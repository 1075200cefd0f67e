#include "answeras.h"
#include "networking.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodevalues.h"
#include "wps/wpscredentials.h"
#include "wps/wpspin.h"

#include <QDateTime>

#include <cstdlib>

void Networking::on_generateWpsPin_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    std::srand(static_cast<unsigned int>(QDateTime::currentMSecsSinceEpoch()));
    request.answer(toValue(wpsPin(static_cast<quint32>(std::rand()) % 10000000)));
}

void Networking::on_performWpsPbc_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (refuseSecondWps(request, Q_FUNC_INFO))
        return;
    LOG4CPLUS_DEBUG(networkingLogger(), "Starting WPS-PBC");
    announceWps(OrvaNetworkWpsType::PushButton, QStringLiteral("WPS in progress..."));
    LOG4CPLUS_WARN(networkingLogger(), "To continue with WPS, push WPS button on your router.");
    startWps(request, Q_FUNC_INFO,
             [this](const auto& reply) { return m_lowlevel->performWpsPbc(reply); });
}

void Networking::on_performWpsPin_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    if (refuseSecondWps(request, Q_FUNC_INFO))
        return;
    const QString pin = request.value().string_();
    LOG4CPLUS_TRACE(networkingLogger(), "Checking passed in PIN: " << pin);
    if (!isWpsPin(pin)) {
        request.fail(networkingError(Q_FUNC_INFO, "WPS PIN needs to be exactly 8 digits"));
        return;
    }
    LOG4CPLUS_INFO(networkingLogger(), "Starting WPS-PIN with PIN " << pin);
    announceWps(OrvaNetworkWpsType::Pin, QStringLiteral("WPS PIN in progress..."));
    LOG4CPLUS_WARN(networkingLogger(),
                   "To continue with WPS, enter the device PIN and continue on your router.");
    startWps(request, Q_FUNC_INFO,
             [this, pin](const auto& reply) { return m_lowlevel->performWpsPin(pin, reply); });
}

bool Networking::refuseSecondWps(const CMSetDataRequest& request, const char* signature)
{
    if (m_wpsRequest)
        request.fail(networkingError(signature, "WPS in progress, ignoring request."));
    return m_wpsRequest.has_value();
}

void Networking::announceWps(OrvaNetworkWpsType type, const QString& message)
{
    m_wifiResource.requestWifiResource(WifiResource::Wps, true);
    updateConnectingMessage(message);
    publishWps(OrvaNetworkWpsStatus::InProgress,
               [type](OrvaNetworkWps& wps) { wps.setType(type); });
}

void Networking::startWps(const CMSetDataRequest& request, const char* signature,
                          const WpsStart& start)
{
    m_wpsRequest = request;
    const auto reply = CMReply<OrvaNetworkInterface>::create();
    if (!start(reply)) {
        request.fail(networkingError(signature, "WPS request failed."));
        m_wpsRequest.reset();
        m_wifiResource.requestWifiResource(WifiResource::Wps, false);
        return;
    }
    // Only a session that runs is watched: the end of a reply that no backend took would be taken
    // for that of the next session.
    reply.addWatcher(
        this, [this](const CMReply<OrvaNetworkInterface>& finished) { wpsFinished(finished); },
        Qt::QueuedConnection);
}

void Networking::publishWps(OrvaNetworkWpsStatus status,
                            const std::function<void(OrvaNetworkWps&)>& also)
{
    OrvaNetworkInfo published = info();
    OrvaNetworkWirelessInterface wireless = published.wireless();
    OrvaNetworkWps wps = wireless.wps();
    wps.setStatus(status);
    also(wps);
    wireless.setWps(wps);
    published.setWireless(wireless);
    publishInfo(published);
}

void Networking::wpsFinished(const CMReply<OrvaNetworkInterface>& reply)
{
    const CMError error = reply.error();
    LOG4CPLUS_TRACE(networkingLogger(), "Enter " << Q_FUNC_INFO << " reply.error: " << error
                                                 << " reply.value: " << reply.value());
    m_wifiResource.requestWifiResource(WifiResource::Wps, false);
    if (!m_wpsRequest) {
        LOG4CPLUS_ERROR(networkingLogger(), "Unmatched WPS notify (no request)");
        return;
    }
    if (error.isEmpty())
        wpsSucceeded(reply.value());
    else
        wpsFailed(error);
    m_wpsRequest.reset();
}

void Networking::wpsSucceeded(const OrvaNetworkInterface& credentials)
{
    LOG4CPLUS_INFO(networkingLogger(), "WPS session successfully finished.");
    updateConnectingMessage(QStringLiteral("WPS finished successfully!"));
    publishWps(OrvaNetworkWpsStatus::Succeeded, [](OrvaNetworkWps&) {});
    OrvaValue value;
    value.setNetworkInterface(credentials);
    m_wpsRequest->answer(value);
}

void Networking::wpsFailed(const CMError& error)
{
    LOG4CPLUS_ERROR(networkingLogger(), "WPS Error: " << error);
    updateConnectingMessage(QStringLiteral("WPS failed: ") + error.message());
    publishWps(OrvaNetworkWpsStatus::Failed,
               [&error](OrvaNetworkWps& wps) { wps.setLastError(error.message()); });
    m_wpsRequest->fail(error);
}

void Networking::on_applyWps_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    const OrvaNetworkInterface credentials = request.value().networkInterface();
    const auto applied = requestProfileChange([credentials](OrvaNetworkProfile& profile) {
        profile = withWpsCredentials(profile, credentials);
        LOG4CPLUS_DEBUG(networkingLogger(), "updated profile: " << profile);
        return CMError();
    });
    answerAs(applied, request);
}
