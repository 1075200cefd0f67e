// SPDX-License-Identifier: Apache-2.0
#include "standins/wifirestarter.h"

#include "network/networkpaths.h"
#include "standins/standinnodes.h"

#include <cerrno>
#include <cstring>

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

ORVA_LOGGER(restarterLogger, "WifiRestarter")

bool setUp(int socket, const QByteArray& name, bool up)
{
    ifreq request{};
    qstrncpy(request.ifr_name, name.constData(), sizeof request.ifr_name);
    if (ioctl(socket, SIOCGIFFLAGS, &request) != 0)
        return false;
    const int others = request.ifr_flags & ~IFF_UP;
    request.ifr_flags = static_cast<short>(up ? others | IFF_UP : others);
    return ioctl(socket, SIOCSIFFLAGS, &request) == 0;
}

/// Returns 0, or the `errno` of what failed.
int takeDownAndUp(const QString& interface)
{
    const QByteArray name = interface.toUtf8();
    if (name.isEmpty() || name.size() >= IFNAMSIZ)
        return ENODEV;
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return errno;
    const int error = setUp(socket, name, false) && setUp(socket, name, true) ? 0 : errno;
    close(socket);
    return error;
}

} // namespace

WifiRestarter::WifiRestarter(const QVariantHash& config)
    : CMNodesWorker(config, QStringLiteral("WifiRestarter"))
    , m_count(CMValueNode::create(nodes(), standinNode(WifiRestartCountPath())))
{
    m_count->setValue(OrvaValue::of(0));
    CMActivateNode::create(nodes(), standinNode(WifiRestartPath()))
        ->setInvoke(this, &WifiRestarter::on_restart, Qt::QueuedConnection);
}

void WifiRestarter::on_restart(const CMSetDataRequest& request)
{
    const OrvaValue wireless(CMRoot()->getValue(OrvaNetworkWirelessInterfacePath()).toHash());
    const QString interface = wireless.string_();
    const int error = takeDownAndUp(interface);
    if (error != 0) {
        const QString reason = QString::fromLocal8Bit(std::strerror(error));
        LOG4CPLUS_ERROR(restarterLogger(), "Couldn't restart " << interface << ": " << reason);
        request.fail(CMError::failed(reason));
        return;
    }
    LOG4CPLUS_INFO(restarterLogger(), "Restarted " << interface);
    m_count->setValue(OrvaValue::of(m_count->value().i32_() + 1));
    request.answer();
}
