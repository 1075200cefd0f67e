// SPDX-License-Identifier: Apache-2.0
#include "wps/wpssession.h"

#include "networkingerror.h"
#include "networkinglog.h"
#include "picture/picture.h"
#include "wps/wpscredentials.h"
#include "wps/wpspin.h"

#include <QDateTime>

#include <cstdlib>

namespace {

// The names of the slots in the log and in the translations.
constexpr auto generateContext = "void Networking::on_generateWpsPin_req(const CMSetDataRequest&)";
constexpr auto pbcContext = "void Networking::on_performWpsPbc_req(const CMSetDataRequest&)";
constexpr auto pinContext = "void Networking::on_performWpsPin_req(const CMSetDataRequest&)";
constexpr auto applyContext = "void Networking::on_applyWps_req(const CMSetDataRequest&)";
constexpr auto cancelContext = "void Networking::on_cancelWps_req(const CMSetDataRequest&)";
constexpr auto finishedContext =
    "void Networking::wpsFinished(const CMReply<OrvaNetworkInterface>&)";

/// Publishes the record of the session after `change(OrvaNetworkWps&)`.
template <class Change>
void publishWps(Picture& picture, const Change& change)
{
    picture.edit([&](OrvaNetworkInfo& info) {
        OrvaNetworkWirelessInterface wireless = info.wireless();
        OrvaNetworkWps wps = wireless.wps();
        change(wps);
        wireless.setWps(wps);
        info.setWireless(wireless);
    });
}

} // namespace

WpsSession::WpsSession(Networking_LowLevel& backend, Picture& picture,
                       const ChangeProfile& changeProfile)
    : m_lowlevel(backend)
    , m_picture(picture)
    , m_changeProfile(changeProfile)
{
}

void WpsSession::on_generateWpsPin_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), generateContext);
    std::srand(static_cast<unsigned int>(QDateTime::currentMSecsSinceEpoch()));
    request.answer(OrvaValue::of(wpsPin(static_cast<quint32>(std::rand()) % 10000000)));
}

void WpsSession::on_performWpsPbc_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), pbcContext);
    if (refuseSecond(request, pbcContext))
        return;
    LOG4CPLUS_DEBUG(networkingLogger(), "Starting WPS-PBC");
    announce(OrvaNetworkWpsType::PushButton, QStringLiteral("WPS in progress..."));
    LOG4CPLUS_WARN(networkingLogger(), "To continue with WPS, push WPS button on your router.");
    start(request, pbcContext,
          [this](const WpsReply& reply) { return m_lowlevel.performWpsPbc(reply); });
}

void WpsSession::on_performWpsPin_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), pinContext);
    if (refuseSecond(request, pinContext))
        return;
    const QString pin = request.value().string_();
    LOG4CPLUS_TRACE(networkingLogger(), "Checking passed in PIN: " << pin);
    if (!isWpsPin(pin))
        return request.fail(networkingError(pinContext, "WPS PIN needs to be exactly 8 digits"));
    LOG4CPLUS_INFO(networkingLogger(), "Starting WPS-PIN with PIN " << pin);
    announce(OrvaNetworkWpsType::Pin, QStringLiteral("WPS PIN in progress..."));
    LOG4CPLUS_WARN(networkingLogger(),
                   "To continue with WPS, enter the device PIN and continue on your router.");
    start(request, pinContext,
          [this, pin](const WpsReply& reply) { return m_lowlevel.performWpsPin(pin, reply); });
}

bool WpsSession::refuseSecond(const CMSetDataRequest& request, const char* context)
{
    if (isRunning())
        request.fail(networkingError(context, "WPS in progress, ignoring request."));
    return isRunning();
}

void WpsSession::announce(OrvaNetworkWpsType type, const QString& message)
{
    Q_EMIT wifiNeeded(true);
    m_picture.updateConnectingMessage(message);
    publishWps(m_picture, [type](OrvaNetworkWps& wps) {
        wps.setStatus(OrvaNetworkWpsStatus::InProgress);
        wps.setType(type);
    });
}

void WpsSession::start(const CMSetDataRequest& request, const char* context,
                       const std::function<bool(const WpsReply& reply)>& perform)
{
    m_wpsRequest = request;
    const auto reply = WpsReply::create();
    if (!perform(reply)) {
        request.fail(networkingError(context, "WPS request failed."));
        m_wpsRequest.reset();
        Q_EMIT wifiNeeded(false);
        return;
    }
    // The watch begins here: a reply that no backend took is dropped, and a watch would take that
    // for the end of the next session.
    reply.addWatcher(
        this, [this](const WpsReply& finished) { wpsFinished(finished); }, Qt::QueuedConnection);
}

void WpsSession::wpsFinished(const WpsReply& reply)
{
    const CMError error = reply.error();
    LOG4CPLUS_TRACE(networkingLogger(), "Enter " << finishedContext << " reply.error: " << error
                                                 << " reply.value: " << reply.value());
    Q_EMIT wifiNeeded(false);
    if (!m_wpsRequest) {
        LOG4CPLUS_ERROR(networkingLogger(), "Unmatched WPS notify (no request)");
        return;
    }
    if (error.isEmpty())
        succeed(reply.value());
    else
        fail(error);
    m_wpsRequest.reset();
}

void WpsSession::succeed(const OrvaNetworkInterface& credentials)
{
    LOG4CPLUS_INFO(networkingLogger(), "WPS session successfully finished.");
    m_picture.updateConnectingMessage(QStringLiteral("WPS finished successfully!"));
    publishWps(m_picture,
               [](OrvaNetworkWps& wps) { wps.setStatus(OrvaNetworkWpsStatus::Succeeded); });
    m_wpsRequest->answer(OrvaValue::of(credentials));
}

void WpsSession::fail(const CMError& error)
{
    LOG4CPLUS_ERROR(networkingLogger(), "WPS Error: " << error);
    m_picture.updateConnectingMessage(QStringLiteral("WPS failed: ") + error.message());
    publishWps(m_picture, [&error](OrvaNetworkWps& wps) {
        wps.setStatus(OrvaNetworkWpsStatus::Failed);
        wps.setLastError(error.message());
    });
    m_wpsRequest->fail(error);
}

void WpsSession::on_applyWps_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), applyContext);
    const OrvaNetworkInterface credentials = request.value().networkInterface();
    const auto applied = m_changeProfile([credentials](const OrvaNetworkProfile& profile) {
        const OrvaNetworkProfile changed = withWpsCredentials(profile, credentials);
        LOG4CPLUS_DEBUG(networkingLogger(), "updated profile: " << changed);
        return changed;
    });
    request.answerAs(applied);
}

void WpsSession::on_cancelWps_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), cancelContext);
    if (!isRunning())
        return request.fail(networkingError(cancelContext, "No WPS session runs."));
    if (!m_lowlevel.cancelWps())
        return request.fail(networkingError(cancelContext, "The WPS session cannot be cancelled."));
    request.answer();
}
