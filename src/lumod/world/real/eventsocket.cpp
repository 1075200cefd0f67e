#include "world/real/eventsocket.h"

#include "log.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

EventSocket::~EventSocket()
{
    m_notifier.reset();
    if (m_socket < 0)
        return;
    ::close(m_socket);
    ::unlink(m_path.constData());
}

Result<> EventSocket::open(const QString& fileName)
{
    sockaddr_un address{};
    const auto path = QFile::encodeName(fileName);
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        return Failure{QStringLiteral("A path too long for a socket: ") + fileName};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    ::unlink(path.constData());
    m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const auto before = ::umask(0177);
    const int bound = ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int fault = errno;
    ::umask(before);
    if (bound != 0) {
        ::close(std::exchange(m_socket, -1));
        return Failure{QStringLiteral("Cannot make %1: %2").arg(fileName, qt_error_string(fault))};
    }
    m_path = path;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &EventSocket::read);
    return {};
}

void EventSocket::read()
{
    constexpr int longest = 65536;
    QByteArray datagram(longest, Qt::Uninitialized);
    const auto size = ::recv(m_socket, datagram.data(), longest, 0);
    if (size < 0)
        return;
    datagram.truncate(static_cast<int>(size));
    if (const auto event = parseDhcpEvent(datagram))
        Q_EMIT received(*event);
    else
        qCWarning(lcLumod) << "An event without an interface, ignoring it";
}
