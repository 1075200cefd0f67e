#include "settings.h"

Settings::Settings(const QVector<SettingDefault>& defaults, const QString& directory)
    : CMNodesWorker(QVariantHash(), QStringLiteral("Settings"))
    , m_file(directory)
{
    for (const SettingDefault& setting : defaults) {
        auto* node = CMValueNode::create(nodes(), setting.path);
        node->setSecret(setting.value.typeKey() == OrvaValue::NetworkProfile());
        node->setValue(m_file.take(setting.path, setting.value).value_or(setting.value));
    }
}

void Settings::setDataRequest(const CMSetDataRequest& request)
{
    QString why;
    if (changes(request) && !m_file.store(request.path(), request.value(), &why)) {
        LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("Settings"),
                        "Couldn't store " << request.path() << ": " << why);
        return request.fail(CMError(QStringLiteral("NotStored"),
                                    TrString(trExtractContext(Q_FUNC_INFO),
                                             "The setting \"%1\" could not be stored: %2.",
                                             {request.path().toString(), why})));
    }
    CMNodesWorker::setDataRequest(request);
}

bool Settings::changes(const CMSetDataRequest& request) const
{
    const auto* node = qobject_cast<const CMValueNode*>(nodes().find(request.path()));
    return node && request.role() == OrvaRoles::Value() &&
           request.value().typeKey() == node->value().typeKey() && request.value() != node->value();
}
