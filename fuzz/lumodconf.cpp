// SPDX-License-Identifier: Apache-2.0
// The daemon's configuration file.
#include "target.h"

#include "common/commentedjson.h"
#include "jsonfile.h"
#include "world/real/realsettings.h"

#include <QLoggingCategory>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (QLoggingCategory::setFilterRules(QStringLiteral("*=false")), true);
    require(quiet);
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto file = readJson(withoutComments(text), QStringLiteral("lumod.conf"));
    require(file.isOk() == file.why().isEmpty());
    const auto settings = realSettings(file.value_or(QVariantMap()));
    for (const auto& name : {settings.wired, settings.wireless, settings.softAp})
        require(name.toUtf8().size() < 16 && !name.contains(QLatin1Char('/')));
    for (const auto& path : {settings.dhcpcd, settings.resolvconf, settings.runtimeDirectory,
                             settings.helperDirectory, settings.resolvConf, settings.wpaSupplicant})
        require(path.startsWith(QLatin1Char('/')));
    require(settings.dhcpDeadline > 0 && settings.wiredMetric > 0 && settings.wirelessMetric > 0);
    require(settings.country.isEmpty() || settings.country.size() == 2);
    for (const int frequency : settings.frequencies)
        require(frequency >= 2412 && frequency <= 7115);
    return 0;
}
