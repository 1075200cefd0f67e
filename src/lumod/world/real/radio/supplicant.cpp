// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicant.h"

#include "log.h"
#include "world/real/radio/powersave.h"

#include <cerrno>

namespace {

constexpr int settleMilliseconds = 50;  // its changes of properties come some milliseconds late
constexpr int scanMilliseconds = 25000; // longer than any radio takes
constexpr int againMilliseconds = 1000;
constexpr int pollMilliseconds = 1000;

bool isError(const QDBusMessage& answer)
{
    return answer.type() == QDBusMessage::ErrorMessage;
}

} // namespace

Supplicant::Supplicant(QString interface, const RealSettings& settings)
    : m_interface(std::move(interface))
    , m_settings(settings)
    , m_engine(m_interface, m_bus, settings)
    , m_networks(m_bus, settings.backgroundScan)
{
    m_scanned.setSingleShot(true);
    m_scanLimit.setSingleShot(true);
    m_scanAgain.setSingleShot(true);
    connect(&m_scanAgain, &QTimer::timeout, this, &Supplicant::requestScan);
    connect(&m_scanned, &QTimer::timeout, this, [this] { endScan(m_scanFault); });
    connect(&m_scanLimit, &QTimer::timeout, this,
            [this] { endScan(QStringLiteral("the radio does not answer")); });
    connect(&m_engine, &SupplicantEngine::ready, this, &Supplicant::setUp);
    connect(&m_engine, &SupplicantEngine::lost, this, &Supplicant::forget);
    connect(&m_engine, &SupplicantEngine::failed, this, &Supplicant::failed);
    connect(&m_bus, &SupplicantBus::told, this, &Supplicant::on_told);
    connect(&m_bus, &SupplicantBus::propertiesChanged, this, &Supplicant::on_properties);
    connect(&m_reasons, &DatagramSocket::received, this, &Supplicant::on_reason);
    connect(&m_networks, &SupplicantNetworks::refused, this, [this](const QString& ssid) {
        Q_EMIT failed(QStringLiteral("wpa_supplicant cannot join with the settings of ") + ssid);
    });
}

Supplicant::~Supplicant()
{
    blockSignals(true); // its owner is going
}

void Supplicant::setUp()
{
    m_bus.set(path(), SupplicantBus::wps, "ProcessCredentials", false); // the client applies them
    // The kernel keeps what it has heard for 30 s, which is long enough.
    m_bus.set(path(), SupplicantBus::interface, "BSSExpireCount", 1U);
    listen();
    setPowerSave(m_engine.index(), m_settings.powerSave);
    Q_EMIT ready();
}

void Supplicant::listen()
{
    const auto opened = m_reasons.open(
        QStringLiteral("%1/reasons-%2").arg(m_settings.runtimeDirectory, m_interface));
    if (opened && m_reasons.send("ATTACH", speaker()))
        return;
    const auto why = opened ? QStringLiteral("nobody answers at ") + speaker() : opened.why();
    Q_EMIT failed(QStringLiteral("Wrong keys cannot be told from other failures: ") + why);
}

QString Supplicant::speaker() const
{
    return QStringLiteral("%1/wpa/%2").arg(m_settings.runtimeDirectory, m_interface);
}

void Supplicant::forget()
{
    m_state = supplicant::State::Away;
    m_network.clear();
    m_current.clear();
    m_heard.clear();
    m_rejecting.clear();
    m_networks.forget();
    m_reasons.close();
    m_scanned.stop();
    m_scanAgain.stop();
    m_scanLimit.stop();
    Q_EMIT lost();
}

std::optional<supplicant::Bss> Supplicant::accessPoint() const
{
    const auto found = m_heard.constFind(m_current);
    return found == m_heard.constEnd() ? std::nullopt : std::optional(*found);
}

int Supplicant::signalLevel() const
{
    if (!m_polled.isValid() || m_polled.hasExpired(pollMilliseconds)) {
        m_polled.start();
        const auto take = [this](const QDBusMessage& answer) {
            m_signal = supplicant::signalLevel(answer.arguments().value(0)).value_or(m_signal);
        };
        m_bus.call(path(), SupplicantBus::interface, "SignalPoll", {}, m_engine.inTurn(take));
    }
    const auto point = accessPoint();
    return m_signal != 0 || !point ? m_signal : point->signal;
}

/// An access point with which a key has failed would be passed over for a while, with the right key
/// too; only the socket can have that forgotten.
void Supplicant::join(const QVector<KnownNetwork>& networks, bool keep)
{
    if (!keep && !m_reasons.send("BSSID_IGNORE clear", speaker()))
        qCDebug(lcLumod) << "wpa_supplicant may pass over what has failed before";
    m_networks.load(path(), networks, keep ? m_network : QString());
}

/// The signals that follow belong to the next attempt.
void Supplicant::leave()
{
    m_networks.clear(path());
    m_state = supplicant::State::Away;
    m_network.clear();
}

void Supplicant::scan()
{
    m_scanLimit.start(scanMilliseconds);
    requestScan();
}

void Supplicant::requestScan()
{
    const QVariantMap how{{QStringLiteral("Type"), QStringLiteral("active")},
                          {QStringLiteral("AllowRoam"), false}};
    m_bus.call(path(), SupplicantBus::interface, "Scan", {how},
               m_engine.inTurn([this](const QDBusMessage& answer) {
                   if (isError(answer))
                       endScan(answer.errorMessage());
               }));
}

void Supplicant::endScan(const QString& fault)
{
    m_scanLimit.stop();
    m_scanAgain.stop();
    m_scanned.stop();
    Q_EMIT scanned(fault);
}

void Supplicant::finishScan(bool success)
{
    m_scanFault = success ? QString() : QStringLiteral("the radio refuses");
    m_scanned.start(settleMilliseconds);
}

void Supplicant::failScan(int error)
{
    if (!m_scanLimit.isActive())
        return;
    m_scanned.stop();
    if (error == EBUSY)
        m_scanAgain.start(againMilliseconds);
    else
        endScan(qt_error_string(error));
}

void Supplicant::startWps(const QString& pin)
{
    QVariantMap how{
        {QStringLiteral("Role"), QStringLiteral("enrollee")},
        {QStringLiteral("Type"), pin.isEmpty() ? QStringLiteral("pbc") : QStringLiteral("pin")}};
    if (!pin.isEmpty())
        how.insert(QStringLiteral("Pin"), pin);
    m_bus.call(path(), SupplicantBus::wps, "Start", {how},
               m_engine.inTurn([this](const QDBusMessage& answer) {
                   if (isError(answer))
                       Q_EMIT wpsFailed(answer.errorMessage());
               }));
}

void Supplicant::cancelWps()
{
    if (isReady())
        m_bus.call(path(), SupplicantBus::wps, "Cancel", {});
}

void Supplicant::on_told(const QString& path, const QString& name, const QVariantList& arguments)
{
    if (path != m_engine.path() || path.isEmpty())
        return;
    if (name == QLatin1String("BSSAdded"))
        supplicant::take(arguments.value(1).toMap(),
                         m_heard[supplicant::objectPath(arguments.value(0))]);
    else if (name == QLatin1String("BSSRemoved"))
        m_heard.remove(supplicant::objectPath(arguments.value(0)));
    else if (name == QLatin1String("Credentials"))
        Q_EMIT wpsBrought(supplicant::wpsCredentials(arguments.value(0).toMap()));
    else if (name == QLatin1String("ScanDone") && m_scanLimit.isActive())
        finishScan(arguments.value(0).toBool());
    if (name != QLatin1String("Event"))
        return;
    const auto event = arguments.value(0).toString();
    const auto why = supplicant::wpsFailure(event, arguments.value(1).toMap());
    if (event == QLatin1String("success"))
        Q_EMIT wpsSucceeded();
    else if (!why.isEmpty())
        Q_EMIT wpsFailed(why);
}

void Supplicant::on_properties(const QString& path, const QString& interface,
                               const QVariantMap& properties)
{
    if (const auto bss = m_heard.find(path); bss != m_heard.end())
        return supplicant::take(properties, *bss);
    if (path != m_engine.path() || interface != QLatin1String(SupplicantBus::interface))
        return;
    const auto value = [&properties](const char* name) {
        return properties.value(QLatin1String(name));
    };
    if (value("CurrentBSS").isValid()) {
        m_current = supplicant::objectPath(value("CurrentBSS"));
        m_signal = 0;
        m_polled.invalidate();
    }
    const auto before = std::make_pair(m_state, m_network);
    if (value("CurrentNetwork").isValid())
        m_network = supplicant::objectPath(value("CurrentNetwork"));
    m_state = supplicant::state(value("State")).value_or(m_state);
    if (before != std::make_pair(m_state, m_network))
        Q_EMIT changed();
}

void Supplicant::on_reason(const QByteArray& datagram)
{
    constexpr int most = 64;
    const auto reason = parseSupplicantReason(datagram);
    if (!reason)
        return;
    using Kind = SupplicantReason::Kind;
    if (reason->kind == Kind::ScanFailed)
        return failScan(reason->error);
    if (reason->kind == Kind::DriverRefused)
        return Q_EMIT driverRefused();
    if (reason->kind == Kind::KeyRejected && m_rejecting.size() < most)
        m_rejecting.append(reason->bssid);
    if (reason->kind == Kind::Joined)
        m_rejecting.clear();
    const auto network = m_networks.numbered(reason->network);
    if (!network)
        return;
    if (reason->kind == Kind::WrongKey ||
        (reason->kind == Kind::Paused && hasRejected(network->ssid)))
        Q_EMIT keyRefused(network->ssid);
    m_rejecting.clear();
}

/// An access point of that name has taken the key for a wrong one.
bool Supplicant::hasRejected(const QString& ssid) const
{
    return std::any_of(m_heard.begin(), m_heard.end(), [&](const supplicant::Bss& bss) {
        return bss.ssid == ssid.toUtf8() && m_rejecting.contains(bss.bssid);
    });
}
