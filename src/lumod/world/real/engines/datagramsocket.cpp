// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/datagramsocket.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

std::optional<sockaddr_un> addressOf(const QByteArray& path)
{
    sockaddr_un address{};
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        return std::nullopt;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    return address;
}

} // namespace

DatagramSocket::~DatagramSocket()
{
    close();
}

void DatagramSocket::close()
{
    m_notifier.reset();
    if (m_socket < 0)
        return;
    ::close(std::exchange(m_socket, -1));
    ::unlink(m_path.constData());
}

Result<> DatagramSocket::open(const QString& fileName)
{
    close();
    const auto path = QFile::encodeName(fileName);
    const auto address = addressOf(path);
    if (!address)
        return Failure{QStringLiteral("A path too long for a socket: ") + fileName};
    ::unlink(path.constData());
    m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const auto before = ::umask(0177);
    const int bound =
        ::bind(m_socket, reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
    const int fault = errno;
    ::umask(before);
    if (bound != 0) {
        ::close(std::exchange(m_socket, -1));
        return Failure{QStringLiteral("Cannot make %1: %2").arg(fileName, qt_error_string(fault))};
    }
    m_path = path;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &DatagramSocket::read);
    return {};
}

bool DatagramSocket::send(const QByteArray& datagram, const QString& to)
{
    const auto address = addressOf(QFile::encodeName(to));
    return address && ::sendto(m_socket, datagram.constData(), static_cast<size_t>(datagram.size()),
                               MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&*address),
                               sizeof *address) == datagram.size();
}

void DatagramSocket::read()
{
    constexpr int longest = 65536;
    QByteArray datagram(longest, Qt::Uninitialized);
    const auto size = ::recv(m_socket, datagram.data(), longest, 0);
    if (size < 0)
        return;
    datagram.truncate(static_cast<int>(size));
    Q_EMIT received(datagram);
}
