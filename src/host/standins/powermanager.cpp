// SPDX-License-Identifier: Apache-2.0
#include "standins/powermanager.h"

#include "power/powerrecords.h"
#include "standins/standinnodes.h"

#include <algorithm>

namespace {

constexpr int maxRequests = 100; // A thousand rows are most of a megabyte.
constexpr int maxModuleName = 64;
constexpr int maxModules = 100;

ORVA_LOGGER(powerManagerLogger, "PowerManager")

/// The record that a request carries, without the fields that no record of its kind has; nothing,
/// and the request refused, where it is malformed.
template <class Record>
std::optional<Record> take(const CMSetDataRequest& request)
{
    const QVariantHash& hash = request.value().__hash();
    const QString malformed = orvaMalformedField(Record::fields(), hash);
    if (!malformed.isEmpty()) {
        request.fail(CMError::malformedValue(
            request.path(), QStringLiteral("its field \"%1\" is of the wrong type or out of range")
                                .arg(malformed)));
        return std::nullopt;
    }
    Record record;
    for (const OrvaField& field : Record::fields()) {
        if (hash.contains(field.key))
            record.__mergeWith(QVariantHash{{field.key, hash.value(field.key)}});
    }
    return record;
}

bool refuseModuleName(const CMSetDataRequest& request, const QString& name)
{
    if (!name.isEmpty() && name.size() <= maxModuleName)
        return false;
    request.fail(CMError::malformedValue(
        request.path(), QStringLiteral("a module's name has 1 to %1 letters").arg(maxModuleName)));
    return true;
}

CMError tooMany()
{
    return {QStringLiteral("TooMany"), TrString(trExtractContext("CMError {anonymous}::tooMany()"),
                                                "There are %1 modules already.", {maxModules})};
}

CMValueNode* createShown(CMNodes& nodes, const CMPath& path, const OrvaValue& first)
{
    auto* node = CMValueNode::create(nodes, standinNode(path));
    node->setValue(first);
    return node;
}

} // namespace

PowerManager::PowerManager()
    : CMNodesWorker(QVariantHash(), QStringLiteral("PowerManager"))
    , m_modules(CMListRowsNode::create(nodes(), standinNode(PowerModulesPath())))
    , m_requests(CMListRowsNode::create(nodes(), standinNode(PowerRequestsPath())))
    , m_wifi(createShown(nodes(), PowerResourceWifiPath(), OrvaValue::of(false)))
    , m_target(createShown(nodes(), PowerTargetPath(), OrvaValue::of(0)))
{
    CMActivateNode::create(nodes(), orvaPowerNode(OrvaPowerManagerModuleRegisterPath()))
        ->setInvoke(this, &PowerManager::on_register, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), orvaPowerNode(OrvaPowerManagerResourceRequestPath()))
        ->setInvoke(this, &PowerManager::on_resourceRequest, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), orvaPowerNode(OrvaPowerManagerTargetRequestPath()))
        ->setInvoke(this, &PowerManager::on_targetRequest, Qt::QueuedConnection);
}

void PowerManager::on_register(const CMSetDataRequest& request)
{
    const auto module = take<OrvaPowerManagerModuleRegister>(request);
    if (!module || refuseModuleName(request, module->moduleName()))
        return;
    if (m_modules->rows().size() >= maxModules && !isRegistered(module->moduleName()))
        return request.fail(tooMany());
    OrvaRoles row;
    row.setId(module->moduleName());
    row.setTitle(module->moduleName());
    m_modules->rowsSetById(row);
    LOG4CPLUS_DEBUG(powerManagerLogger(), "Module " << module->moduleName());
    request.answer();
}

void PowerManager::on_resourceRequest(const CMSetDataRequest& request)
{
    const auto wanted = take<OrvaPowerManagerResourceRequest>(request);
    if (!wanted || refuseModuleName(request, wanted->moduleName()))
        return;
    // A module that registered in time is served even in a crowd.
    if (m_wifiHolders.size() >= maxModules && !isRegistered(wanted->moduleName()))
        return request.fail(tooMany());
    record(QStringLiteral("resource"), *wanted);
    if (wanted->resource() == OrvaPowerManagerResources::Wifi) {
        if (wanted->action() != OrvaPowerModuleActions::None)
            m_wifiHolders.removeAll(wanted->moduleName());
        if (wanted->action() == OrvaPowerModuleActions::Request)
            m_wifiHolders << wanted->moduleName();
        m_wifi->setValue(OrvaValue::of(!m_wifiHolders.isEmpty()));
    }
    request.answer();
}

void PowerManager::on_targetRequest(const CMSetDataRequest& request)
{
    const auto wanted = take<OrvaPowerManagerTarget>(request);
    if (!wanted)
        return;
    record(QStringLiteral("target"), *wanted);
    m_target->setValue(OrvaValue::of(qint32(wanted->target())));
    request.answer();
}

bool PowerManager::isRegistered(const QString& module) const
{
    const auto& rows = m_modules->rows();
    return std::any_of(rows.begin(), rows.end(),
                       [&module](const OrvaRoles& row) { return row.id() == module; });
}

void PowerManager::record(const QString& what, const OrvaHash& request)
{
    LOG4CPLUS_DEBUG(powerManagerLogger(), "Request for a " << what << ": " << request);
    OrvaRoles row;
    row.setId(QString::number(++m_requestCount));
    row.setTitle(what);
    row.setValue(OrvaValue(request));
    m_requests->rowsSetById(row);
    if (m_requests->rows().size() > maxRequests)
        m_requests->rowsRemoveById(m_requests->rows().first().id());
}
