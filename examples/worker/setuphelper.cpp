// SPDX-License-Identifier: Apache-2.0
#include "setuphelper.h"

#include <core/orvaworker.h>
#include <network/networkpaths.h>

namespace {

const auto workerName = QStringLiteral("setup-helper");

ORVA_LOGGER(setupLogger, "setup-helper")

constexpr int longestMs = 60000; ///< that a request may ask for; without a time it has no end

/// The setting of the time for which the access point stays open: what the device's configuration
/// says or somebody has set, else a minute. A setting may be any number.
int openForMs()
{
    const CMPath path(QStringLiteral("settings/setup-helper/open-ms"));
    const OrvaValue setting(CMRoot()->getValue(path).toHash());
    if (setting.typeKey() != OrvaValue::I32())
        return longestMs;
    if (setting.i32_() >= 1 && setting.i32_() <= longestMs)
        return setting.i32_();
    LOG4CPLUS_WARN(setupLogger(), path << " is not 1 to " << longestMs << ": " << setting.i32_());
    return longestMs;
}

} // namespace

SetupHelper::SetupHelper(const QVariantHash& config)
    : CMNodesWorker(config, workerName)
    , m_advice(CMValueNode::create(nodes(), CMPath(QStringLiteral("setup-helper/advice"))))
    , m_summary(CMValueNode::create(nodes(), CMPath(QStringLiteral("setup-helper/summary"))))
    , m_info(this, OrvaNetworkInfoPath())
{
    m_advice->setTitle(TrString(trExtractContext("SetupHelper::SetupHelper(const QVariantHash&)"),
                                "How to reach this device"));
    m_advice->setType(OrvaValue::String());
    m_advice->setReadOnly(true);
    // Comes for the first known value too, whichever worker is loaded first.
    connect(&m_info, &CMValueItem::changed, this, [this](const OrvaValue&, const OrvaValue& value) {
        m_advice->setValue(OrvaValue::of(adviceFor(value.networkInfo())));
    });

    // A list is read whole when it has changed.
    connect(CMRoot(), &CMAbstractWorker::rowsChanged, this, [this](const CMPath& path) {
        if (path == OrvaNetworkScanResultsPath())
            countNetworks();
    });
    m_summary->setReadOnly(true);
    m_open.setSingleShot(true);
    connect(&m_open, &QTimer::timeout, this, &SetupHelper::publishSummary);
    publishSummary();

    auto* open = CMActivateNode::create(nodes(), CMPath(QStringLiteral("setup-helper/open")));
    open->setTitle(TrString(trExtractContext("SetupHelper::SetupHelper(const QVariantHash&)"),
                            "Open the setup network"));
    open->setInvoke(this, &SetupHelper::on_open_req, Qt::QueuedConnection);
}

QString SetupHelper::adviceFor(const OrvaNetworkInfo& info)
{
    if (info.state() == OrvaNetworkState::Connected)
        return QStringLiteral("The device is on your network.");
    if (info.softAp().state() == OrvaNetworkState::Connected)
        return QStringLiteral("Join the device's own wireless network to set it up.");
    return QStringLiteral("Plug in a cable, or open the setup network.");
}

void SetupHelper::countNetworks()
{
    const auto rows = CMReply<QVariant>::create();
    CMRoot()->request(CMGetRowsRequest{OrvaNetworkScanResultsPath(), rows});
    m_networks = rows.value().toList().size();
    publishSummary();
}

void SetupHelper::publishSummary()
{
    // A record of this worker's own travels as a map below a key of its own.
    QVariantHash summary{{QStringLiteral("open"), m_open.isActive()},
                         {QStringLiteral("networks"), m_networks}};
    if (!m_refusal.isEmpty())
        summary.insert(QStringLiteral("refused"), m_refusal);
    m_summary->setValue(OrvaValue(QVariantHash{{QStringLiteral("setupHelper"), summary}}));
}

void SetupHelper::on_open_req(const CMSetDataRequest& request)
{
    const int time = openForMs();
    LOG4CPLUS_INFO(setupLogger(), "Opening the setup network for " << time << " ms");
    OrvaNetworkProfileSoftApRequest softAp;
    softAp.setName(name());
    softAp.setTimeout(time);
    const auto reply = CMReply<QVariant>::create();
    // Answered when the access point is up, or refused; the requester gets that answer.
    reply.addWatcher(this, [this, time](const CMReply<QVariant>& answer) {
        m_refusal = answer.error().message();
        if (answer.error().isEmpty())
            m_open.start(time);
        publishSummary();
    });
    request.answerAs(reply);
    CMRoot()->invoke(OrvaNetworkRequestSoftApPath(), OrvaValue::of(softAp), reply);
}

ORVA_WORKER(SetupHelper)
