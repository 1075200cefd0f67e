// SPDX-License-Identifier: Apache-2.0
#include "workerfixture.h"

#include "network/networkpaths.h"
#include "networksettings.h"
#include "settings.h"
#include "standins/powermanager.h"

namespace {

NodeValues completed(const NodeValues& values)
{
    NodeValues all = {{OrvaNetworkWiredInterfacePath(), OrvaValue::of("eth0"_s)},
                      {OrvaNetworkWirelessInterfacePath(), OrvaValue::of("wlan0"_s)},
                      {OrvaWebserverPortPath(), OrvaValue::of(80)}};
    const auto defaults = networkSettingDefaults();
    for (const SettingDefault& setting : defaults)
        all.insert(setting.path, setting.value);
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        all.insert(entry.key(), entry.value());
    return all;
}

QString rfkillRecord(const QTemporaryDir& directory)
{
    return directory.filePath("rfkill"_s);
}

/// The real rfkill must not be found, whoever starts the program.
void standInForRfkill(const QTemporaryDir& directory)
{
    qputenv("ORVA_RFKILL_RECORD", rfkillRecord(directory).toLocal8Bit());
    const QByteArray first = ORVA_STAND_INS ":";
    const QByteArray path = qgetenv("PATH");
    if (!path.startsWith(first))
        qputenv("PATH", first + path);
}

} // namespace

WorkerFixture::WorkerFixture(const NodeValues& values, const Prepare& prepare)
    : WorkerFixture(values, [&](NetworkListener&) {
        auto own = std::make_unique<ScriptedBackend>();
        backend = own.get();
        if (prepare)
            prepare(*own);
        return own;
    })
{
}

WorkerFixture::WorkerFixture(const NodeValues& values,
                             const Networking::BackendFactory& createBackend)
    : WorkerHost(completed(values))
{
    standInForRfkill(m_directory);
    root.addWorker(std::make_unique<PowerManager>());
    auto ownWorker = std::make_unique<Networking>(QVariantHash(), createBackend);
    worker = ownWorker.get();
    root.addWorker(std::move(ownWorker));
    HeldClock::settle();
}

OrvaNetworkInfo WorkerFixture::info()
{
    return value(OrvaNetworkInfoPath()).networkInfo();
}

QStringList WorkerFixture::rfkillCalls() const
{
    QFile record(rfkillRecord(m_directory));
    if (!record.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(record.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

OrvaNetworkInterface wpaNetwork(const QString& ssid)
{
    OrvaNetworkInterface network;
    network.setSsid(ssid);
    network.setKey("secret-"_s + ssid);
    network.setEncryption(OrvaNetworkProfileWirelessEncryption::WpaPsk);
    network.setDhcp(true);
    return network;
}

OrvaNetworkProfile profileWith(const QStringList& ssids)
{
    OrvaList<OrvaNetworkInterface> networks;
    for (const QString& ssid : ssids)
        networks << wpaNetwork(ssid);
    OrvaNetworkProfile profile;
    profile.setWirelessNetworks(networks);
    if (!networks.isEmpty())
        profile.setWireless(networks.first());
    return profile;
}
