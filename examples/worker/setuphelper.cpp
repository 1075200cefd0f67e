// SPDX-License-Identifier: Apache-2.0
#include "setuphelper.h"

#include <network/networkpaths.h>

namespace {

const auto workerName = QStringLiteral("setup-helper");

/// The time for which the access point stays open, in milliseconds; the most that a request may ask
/// for.
constexpr int openForMs = 60000;

} // namespace

SetupHelper::SetupHelper(const QVariantHash& config)
    : CMNodesWorker(config, workerName)
    , m_advice(CMValueNode::create(nodes(), CMPath(QStringLiteral("setup-helper/advice"))))
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

void SetupHelper::on_open_req(const CMSetDataRequest& request)
{
    OrvaNetworkProfileSoftApRequest softAp;
    softAp.setName(name());
    softAp.setTimeout(openForMs);
    const auto reply = CMReply<QVariant>::create();
    // Answered when the access point is up, or refused; the requester gets that answer.
    request.answerAs(reply);
    CMRoot()->invoke(OrvaNetworkRequestSoftApPath(), OrvaValue::of(softAp), reply);
}

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    return new SetupHelper(config);
}
