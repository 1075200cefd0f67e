// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicantengine.h"

#include "log.h"
#include "world/real/engines/requiredprogram.h"
#include "world/real/engines/savetext.h"
#include "world/real/radio/supplicantdecoding.h"

#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QSysInfo>

namespace {

constexpr int retryMilliseconds = 5000;
constexpr int missingMilliseconds = 60000;

/// The name that a router's list shows while WPS runs.
QByteArray deviceName()
{
    constexpr int longest = 32;
    QByteArray name;
    for (const char c : QSysInfo::machineHostName().toLatin1().left(longest))
        name += (c > ' ' && c < 0x7f) ? c : '-';
    return name.isEmpty() ? QByteArrayLiteral("device") : name;
}

} // namespace

SupplicantEngine::SupplicantEngine(QString interface, SupplicantBus& bus,
                                   const RealSettings& settings)
    : m_interface(std::move(interface))
    , m_bus(bus)
    , m_settings(settings)
    , m_configuration(QStringLiteral("%1/wpa-%2.conf").arg(settings.runtimeDirectory, m_interface))
    , m_child(settings.helperDirectory + QStringLiteral("/lumod-keep"),
              QStringLiteral("wpa_supplicant"))
{
    m_child.hideAfter("WPS-CRED-RECEIVED"); // the key follows
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &SupplicantEngine::find);
    connect(&m_child, &ChildProcess::failed, this, [this](const QString& why, int pause) {
        m_child.killOrphans();
        lose();
        m_retry.start(pause);
        m_fault = QStringLiteral("wpa_supplicant has ended: ") + why;
        Q_EMIT failed(m_fault);
    });
    connect(&m_child, &ChildProcess::stopped, this, [this] {
        m_child.killOrphans();
        if (m_index != 0)
            find();
    });
    connect(&m_bus, &SupplicantBus::appeared, this, &SupplicantEngine::attach);
    connect(&m_bus, &SupplicantBus::vanished, this, [this] {
        lose();
        if (m_index != 0 && !m_child.isRunning() && !m_retry.isActive()) // another's
            m_retry.start(retryMilliseconds);
    });
}

SupplicantEngine::~SupplicantEngine()
{
    blockSignals(true); // its owner is going
    stop();
    m_child.end();
    m_child.killOrphans();
    QFile::remove(m_configuration);
    QDir(socketDirectory()).removeRecursively(); // of one that was killed
}

void SupplicantEngine::start(int index)
{
    if (index == m_index)
        return;
    if (m_index != 0)
        stop();
    m_index = index;
    find();
}

void SupplicantEngine::stop()
{
    m_index = 0;
    m_retry.stop();
    if (!m_path.isEmpty())
        remove(QVariant::fromValue(QDBusObjectPath(m_path)), {});
    lose();
    if (m_child.isRunning())
        m_child.stop();
}

void SupplicantEngine::remove(const QVariant& path, const SupplicantBus::Then& then)
{
    m_bus.call(SupplicantBus::rootPath(), SupplicantBus::root, "RemoveInterface", {path}, then);
}

void SupplicantEngine::find()
{
    m_bus.findOwner([this](bool owned) {
        if (m_index == 0 || !m_path.isEmpty() || m_child.isEnding())
            return;
        if (owned)
            attach();
        else if (!m_child.isRunning())
            launch();
        else
            m_retry.start(retryMilliseconds); // it ends, or has not come to the bus yet
    });
}

void SupplicantEngine::launch()
{
    const auto found = requireProgram("Wi-Fi needs", m_settings.wpaSupplicant, "wpasupplicant");
    if (!found) {
        tell(found.why());
        return m_retry.start(missingMilliseconds);
    }
    m_child.start(m_settings.wpaSupplicant, {QStringLiteral("-u")});
}

/// Says it once.
void SupplicantEngine::tell(const QString& fault)
{
    if (fault != std::exchange(m_fault, fault))
        Q_EMIT failed(fault);
}

void SupplicantEngine::attach()
{
    if (m_index == 0 || !m_path.isEmpty() || m_child.isEnding())
        return;
    ++m_turn;
    if (const auto saved = saveText(m_configuration, configuration()); !saved) {
        tell(QStringLiteral("Cannot write ") + saved.why());
        return m_retry.start(retryMilliseconds);
    }
    const QVariantMap wanted{{QStringLiteral("Ifname"), m_interface},
                             {QStringLiteral("Driver"), QStringLiteral("nl80211")},
                             {QStringLiteral("ConfigFile"), m_configuration}};
    m_bus.call(SupplicantBus::rootPath(), SupplicantBus::root, "CreateInterface", {wanted},
               inTurn([this](const QDBusMessage& answer) { attached(answer); }));
}

void SupplicantEngine::attached(const QDBusMessage& answer)
{
    if (answer.errorName() == QLatin1String("fi.w1.wpa_supplicant1.InterfaceExists"))
        return takeOver();
    m_path = supplicant::objectPath(answer.arguments().value(0));
    if (m_path.isEmpty()) {
        tell(QStringLiteral("wpa_supplicant cannot drive %1: %2")
                 .arg(m_interface, answer.errorMessage()));
        return m_retry.start(retryMilliseconds);
    }
    m_fault.clear();
    Q_EMIT ready();
}

/// Somebody has had it drive the interface already, with settings that are not ours.
void SupplicantEngine::takeOver()
{
    qCWarning(lcLumod).noquote() << "Somebody else drives" << m_interface
                                 << "by wpa_supplicant; taking it over";
    m_bus.call(SupplicantBus::rootPath(), SupplicantBus::root, "GetInterface", {m_interface},
               inTurn([this](const QDBusMessage& answer) {
                   if (answer.type() == QDBusMessage::ErrorMessage)
                       return m_retry.start(retryMilliseconds);
                   remove(answer.arguments().value(0),
                          inTurn([this](const QDBusMessage&) { attach(); }));
               }));
}

QString SupplicantEngine::socketDirectory() const
{
    return m_settings.runtimeDirectory + QStringLiteral("/wpa");
}

QByteArray SupplicantEngine::configuration() const
{
    QByteArray text = "ctrl_interface=" + socketDirectory().toUtf8() + '\n';
    text += "update_config=0\np2p_disabled=1\n"; // its P2P would take an interface of the radio
    text += "device_name=" + deviceName() + "\nconfig_methods=virtual_push_button keypad\n";
    if (!m_settings.country.isEmpty())
        text += "country=" + m_settings.country.toLatin1() + '\n';
    if (m_settings.frequencies.isEmpty())
        return text;
    text += "freq_list=";
    for (const int frequency : m_settings.frequencies)
        text += QByteArray::number(frequency) + ' ';
    return text + '\n';
}

void SupplicantEngine::lose()
{
    ++m_turn;
    if (m_path.isEmpty())
        return;
    m_path.clear();
    Q_EMIT lost();
}

SupplicantBus::Then SupplicantEngine::inTurn(const SupplicantBus::Then& then) const
{
    return [this, then, turn = m_turn](const QDBusMessage& answer) {
        if (turn == m_turn)
            then(answer);
    };
}
