// SPDX-License-Identifier: Apache-2.0
#include "websettings.h"

#include "bodies.h"
#include "common/commentedjson.h"

#include <QHostAddress>

namespace {

constexpr int portEnd = 65536;

struct SettingsRecord : OrvaHash
{
    ORVA_RECORD(SettingsRecord)
    ORVA_FIELD(qint32, port, Port);
    ORVA_FIELD(QStringList, listen, Listen);
    ORVA_FIELD(QStringList, names, Names);
    ORVA_FIELD(QString, accessCode, AccessCode);
    ORVA_FIELD(bool, homeNetwork, HomeNetwork);
};

/// The key whose value lies outside its range; empty where all suit.
QString outOfRange(const SettingsRecord& record)
{
    if (record.port() < 0 || record.port() >= portEnd)
        return SettingsRecord::Port();
    for (const QString& address : record.listen()) {
        if (QHostAddress(address).isNull())
            return SettingsRecord::Listen();
    }
    return QString();
}

} // namespace

OrvaResult<WebSettings> readWebSettings(const QString& fileName)
{
    const auto text = readCommentedJson(fileName);
    if (!text)
        return CMError::failed(text.why());
    return parseWebSettings(*text);
}

OrvaResult<WebSettings> parseWebSettings(const QByteArray& text)
{
    const auto record = parseBody<SettingsRecord>(text);
    if (!record)
        return record.error();
    if (const QString key = outOfRange(*record); !key.isEmpty())
        return malformedBody(QStringLiteral("\"%1\" is not what it should be").arg(key));
    WebSettings settings;
    settings.port = static_cast<quint16>(record->port());
    if (record->__contains(SettingsRecord::Listen()))
        settings.listen = record->listen();
    settings.names = record->names();
    settings.accessCode = record->accessCode();
    settings.homeNetwork = record->homeNetwork();
    return settings;
}
