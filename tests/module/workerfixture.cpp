// SPDX-License-Identifier: Apache-2.0
#include "workerfixture.h"

#include "heldclock.h"

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

ValueStore::ValueStore(const NodeValues& values)
    : CMNodesWorker({}, "store"_s)
{
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        CMValueNode::create(nodes(), entry.key())->setValue(entry.value());
}

void ValueStore::setDataRequest(const CMSetDataRequest& request)
{
    if (full)
        return request.fail(CMError("NotStored"_s, "full"_s));
    writes.append({request.path(), request.value()});
    if (mute)
        return m_kept.append(request);
    CMNodesWorker::setDataRequest(request);
}

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
{
    standInForRfkill(m_directory);
    auto ownStore = std::make_unique<ValueStore>(completed(values));
    store = ownStore.get();
    root.addWorker(std::move(ownStore));
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

QVector<OrvaValue> WorkerFixture::writes(const CMPath& path) const
{
    QVector<OrvaValue> values;
    for (const auto& [written, value] : std::as_const(store->writes)) {
        if (written == path)
            values << value;
    }
    return values;
}

CMReply<QVariant> WorkerFixture::send(const CMPath& path, const OrvaValue& value)
{
    const auto reply = CMReply<QVariant>::create();
    root.invoke(path, value, reply);
    return reply;
}

QString WorkerFixture::outcome(const CMVoidReply& reply)
{
    if (!reply.isFinished())
        return "no answer"_s;
    const CMError error = reply.error();
    return error.isEmpty() ? QString() : error.name() + ": "_s + error.message();
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
