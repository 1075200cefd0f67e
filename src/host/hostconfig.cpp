// SPDX-License-Identifier: Apache-2.0
#include "hostconfig.h"

#include "common/commentedjson.h"
#include "core/orvawords.h"

namespace {

ORVA_LOGGER(configLogger, "HostConfig")

struct InterfacesRecord : OrvaHash
{
    ORVA_RECORD(InterfacesRecord)
    ORVA_FIELD(QString, wired, Wired);
    ORVA_FIELD(QString, wireless, Wireless);
};

struct WebserverRecord : OrvaHash
{
    ORVA_RECORD(WebserverRecord)
    ORVA_FIELD(qint32, port, Port);
};

struct WorkerRecord : OrvaHash
{
    ORVA_RECORD(WorkerRecord)
    ORVA_FIELD(QString, library, Library);
    ORVA_FIELD(OrvaHash, config, Config);
    ORVA_FIELD(bool, required, Required);
};

struct ConfigRecord : OrvaHash
{
    ORVA_RECORD(ConfigRecord)
    ORVA_FIELD(OrvaList<WorkerRecord>, workers, Workers);
    ORVA_FIELD(OrvaList<CMPath>, activate, Activate);
    ORVA_FIELD(QString, stateDirectory, StateDirectory);
    ORVA_FIELD(InterfacesRecord, interfaces, Interfaces);
    ORVA_FIELD(WebserverRecord, webserver, Webserver);
    ORVA_FIELD(OrvaHash, settings, Settings);
};

void logUnknownKeys(const OrvaHash& config)
{
    const auto& fields = ConfigRecord::fields();
    const QStringList keys = config.__hash().keys();
    for (const QString& key : keys) {
        if (std::none_of(fields.begin(), fields.end(),
                         [&key](const OrvaField& field) { return field.key == key; }))
            LOG4CPLUS_WARN(configLogger(),
                           "The configuration's key \"" << key << "\" means nothing");
    }
}

/// Puts the configured defaults in the place of the built-in ones. Fails at the first that does not
/// suit.
OrvaResult<void> mergeSettings(QVector<SettingDefault>& settings, const QVariantHash& configured)
{
    for (auto entry = configured.begin(); entry != configured.end(); ++entry) {
        const auto written = orvaWithNumbers(OrvaValue::fields(), entry->toHash());
        if (!written)
            return written.error();
        const OrvaValue value(*written);
        const CMPath path(entry.key());
        const auto known =
            std::find_if(settings.begin(), settings.end(),
                         [&path](const SettingDefault& setting) { return setting.path == path; });
        const bool suits = !value.typeKey().isEmpty() &&
                           orvaMalformedField(OrvaValue::fields(), value.__hash()).isEmpty() &&
                           (known == settings.end() || known->value.typeKey() == value.typeKey());
        if (!suits)
            return CMError::failed(
                known == settings.end()
                    ? QStringLiteral("the setting \"%1\" is no value").arg(entry.key())
                    : QStringLiteral("the setting \"%1\" takes a \"%2\"")
                          .arg(entry.key(), known->value.typeKey()));
        if (known == settings.end())
            settings.append({path, value});
        else
            known->value = value;
    }
    return {};
}

HostConfig fromRecord(const ConfigRecord& record)
{
    HostConfig config;
    const auto workers = record.workers();
    for (const WorkerRecord& worker : workers)
        config.workers.append({worker.library(), worker.config().__hash(),
                               !worker.__contains(WorkerRecord::Required()) || worker.required()});
    config.activate = record.activate();
    if (record.__contains(ConfigRecord::StateDirectory()))
        config.stateDirectory = record.stateDirectory();
    if (record.interfaces().__contains(InterfacesRecord::Wired()))
        config.wiredInterface = record.interfaces().wired();
    if (record.interfaces().__contains(InterfacesRecord::Wireless()))
        config.wirelessInterface = record.interfaces().wireless();
    if (record.webserver().__contains(WebserverRecord::Port()))
        config.webserverPort = record.webserver().port();
    return config;
}

} // namespace

OrvaResult<HostConfig> readHostConfig(const QString& fileName)
{
    const auto text = readCommentedJson(fileName);
    if (!text)
        return CMError::failed(text.why());
    const auto json = OrvaPlain::fromJson(*text);
    if (!json)
        return json.error();
    if (json->userType() != QMetaType::QVariantHash)
        return CMError::failed(QStringLiteral("it is not an object"));
    const ConfigRecord record(json->toHash());
    const QString malformed = orvaMalformedField(ConfigRecord::fields(), record.__hash());
    if (!malformed.isEmpty())
        return CMError::failed(
            QStringLiteral("\"%1\" is not what it should be, see host.json(5)").arg(malformed));
    logUnknownKeys(record);
    HostConfig config = fromRecord(record);
    const auto merged = mergeSettings(config.settings, record.settings().__hash());
    if (!merged)
        return merged.error();
    return config;
}
