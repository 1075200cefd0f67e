// SPDX-License-Identifier: Apache-2.0
#include "wake/wakeonlan.h"

#include "wake/magicpacket.h"
#include "wake/wakefilter.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "power/powerrecords.h"

#include <QTimer>

#include <cerrno>
#include <utility>

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr quint16 etherwakeProtocol = 0x0842;

ORVA_LOGGER(wakeLogger, "WakeOnLan")

/// Delivers the packets of all interfaces from behind their link-layer header.
int openPacketSocket(quint16 protocol)
{
    return socket(AF_PACKET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, htons(protocol));
}

void closeSocket(int& socket, std::unique_ptr<QSocketNotifier>& notifier)
{
    // The notifier first: it must not watch a descriptor that another owner may already have.
    notifier.reset();
    if (socket >= 0)
        close(std::exchange(socket, -1));
}

} // namespace

WakeOnLan::WakeOnLan(QObject* parent)
    : QObject(parent)
{
    QTimer::singleShot(0, this, &WakeOnLan::on_init);
}

WakeOnLan::~WakeOnLan()
{
    disableEtherwake();
    disableWakeOnLan();
}

void WakeOnLan::on_init()
{
    auto* mac = new CMValueItem(this, OrvaNetworkStateCurrentMAC());
    connect(mac, &CMValueItem::changed, this,
            [this](const OrvaValue&, const OrvaValue& value) { on_macChanged(value); });
}

void WakeOnLan::on_macChanged(const OrvaValue& value)
{
    const QString mac = value.string_();
    const std::optional<QByteArray> pattern = magicPattern(mac);
    if (!pattern)
        return;
    LOG4CPLUS_INFO(wakeLogger(), "Configuring WOL matcher to " << mac);
    m_matcher.setPattern(*pattern);
}

void WakeOnLan::on_setEnabled(const CMSetDataRequest& request)
{
    if (request.value().bool_()) {
        enableEtherwake();
        enableWakeOnLan();
    } else {
        disableEtherwake();
        disableWakeOnLan();
    }
    request.answer();
}

void WakeOnLan::enableEtherwake()
{
    disableEtherwake();
    m_etherwakeSocket = openPacketSocket(etherwakeProtocol);
    m_etherwakeNotifier = watch(m_etherwakeSocket);
}

void WakeOnLan::disableEtherwake()
{
    closeSocket(m_etherwakeSocket, m_etherwakeNotifier);
}

void WakeOnLan::enableWakeOnLan()
{
    disableWakeOnLan();
    m_wakeOnLanSocket = openPacketSocket(ETH_P_IP);
    if (m_wakeOnLanSocket >= 0 && !attachWakeFilter(m_wakeOnLanSocket))
        LOG4CPLUS_WARN(wakeLogger(), "Couldn't attach the packet filter, errno " << errno);
    m_wakeOnLanNotifier = watch(m_wakeOnLanSocket);
}

void WakeOnLan::disableWakeOnLan()
{
    closeSocket(m_wakeOnLanSocket, m_wakeOnLanNotifier);
}

std::unique_ptr<QSocketNotifier> WakeOnLan::watch(int socket)
{
    if (socket < 0)
        return nullptr;
    auto notifier = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &WakeOnLan::on_internal_wake);
    return notifier;
}

void WakeOnLan::on_internal_wake(int socket)
{
    const ssize_t size = recvfrom(socket, m_buffer.data(), m_buffer.size(), 0, nullptr, nullptr);
    if (size == -1) {
        LOG4CPLUS_ERROR(wakeLogger(), "Error receiving packet: " << errno);
        return;
    }
    if (!isCandidate(socket, static_cast<std::size_t>(size)))
        return;
    // An empty matcher would match everywhere.
    if (m_matcher.pattern().isEmpty())
        return;
    const auto* bytes = reinterpret_cast<const char*>(m_buffer.data());
    if (m_matcher.indexIn(bytes, static_cast<int>(size)) >= 0)
        wake();
}

bool WakeOnLan::isCandidate(int socket, std::size_t size) const
{
    if (socket == m_etherwakeSocket)
        return true;
    return socket == m_wakeOnLanSocket && isWakeDatagram(m_buffer.data(), size);
}

void WakeOnLan::wake()
{
    OrvaPowerManagerTarget target;
    target.setTarget(OrvaPowerManagerTargets::Wake);
    CMRoot()->invoke(OrvaPowerManagerTargetRequestPath(), target, CMReply<QVariant>::create());
}
