// SPDX-License-Identifier: Apache-2.0
#include "settings.h"

#include "common/hostnodes.h"

namespace {
ORVA_LOGGER(settingsLogger, "Settings")
} // namespace

Settings::Settings(const QVector<SettingDefault>& defaults, const QString& directory)
    : CMNodesWorker(QVariantHash(), QStringLiteral("Settings"))
    , m_file(directory)
{
    for (const SettingDefault& setting : defaults) {
        auto* node = CMValueNode::create(nodes(), setting.path);
        node->setSecret(setting.value.typeKey() == OrvaValue::NetworkProfile());
        node->setValue(m_file.take(setting.path, setting.value).value_or(setting.value));
    }
    m_fault = CMValueNode::create(nodes(), hostNode(HostSettingsFaultPath()));
    m_fault->setValue(OrvaValue::of(m_file.fault()));
    QStringList unknown = m_file.paths();
    const auto isKnown = [this](const QString& path) { return nodes().find(CMPath(path)); };
    unknown.erase(std::remove_if(unknown.begin(), unknown.end(), isKnown), unknown.end());
    if (!unknown.isEmpty())
        LOG4CPLUS_INFO(settingsLogger(),
                       "Kept, though nobody here knows them, are the stored settings "
                           << unknown.join(QStringLiteral(", ")));
}

Settings::~Settings()
{
    commit();
}

void Settings::getDataRequest(const CMGetDataRequest& request)
{
    // A read that comes after a write finds what was written.
    if (std::any_of(m_waiting.cbegin(), m_waiting.cend(),
                    [&](const auto& waiting) { return waiting.path() == request.path; }))
        commit();
    CMNodesWorker::getDataRequest(request);
}

void Settings::setDataRequest(const CMSetDataRequest& request)
{
    if (!suits(request))
        return CMNodesWorker::setDataRequest(request);
    const auto put = m_file.put(request.path(), request.value());
    if (!put)
        return refuse(request, put.error());
    if (m_waiting.isEmpty())
        QMetaObject::invokeMethod(this, &Settings::commit, Qt::QueuedConnection);
    m_waiting.append(request);
    if (request.reply())
        request.reply().data()->setHurry([this] { commit(); });
}

bool Settings::suits(const CMSetDataRequest& request) const
{
    const auto* node = qobject_cast<const CMValueNode*>(nodes().find(request.path()));
    return node && !node->isReadOnly() && request.role() == OrvaRoles::Value() &&
           request.value().typeKey() == node->value().typeKey();
}

void Settings::commit()
{
    const auto written = std::exchange(m_waiting, {});
    const auto stored = written.isEmpty() ? OrvaResult<void>() : m_file.commit();
    m_fault->setValue(OrvaValue::of(m_file.fault()));
    if (!stored) {
        for (const CMSetDataRequest& request : written)
            refuse(request, stored.error());
        return;
    }
    for (const CMSetDataRequest& request : written)
        m_stored.enqueue(request);
    // The answer to one may bring another write, which is waited for: the older ones come first
    // then, too.
    while (!m_stored.isEmpty())
        CMNodesWorker::setDataRequest(m_stored.dequeue());
}

void Settings::refuse(const CMSetDataRequest& request, const CMError& error) const
{
    LOG4CPLUS_ERROR(settingsLogger(),
                    "Couldn't store " << request.path() << ": " << error.message());
    const auto context =
        trExtractContext("void Settings::refuse(const CMSetDataRequest&, const CMError&) const");
    request.fail(CMError(QStringLiteral("NotStored"),
                         TrString(context, "The setting \"%1\" could not be stored: %2.",
                                  {request.path().toString(), error.message()})));
}
