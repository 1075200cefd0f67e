#include "world/real/realworld.h"

#include "log.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

RealWorld::RealWorld(RealSettings settings)
    : m_settings(std::move(settings))
    , m_nameServers(m_settings)
    , m_cable(*this, m_kernel, m_nameServers, m_settings)
{
    connect(&m_kernel, &Kernel::changed, &m_cable, &RealCable::update);
    connect(&m_events, &DatagramSocket::received, this, &RealWorld::take);
    connect(&m_nameServers, &NameServers::failed, this, &World::failed);
}

RealWorld::~RealWorld()
{
    if (m_lock >= 0)
        ::close(m_lock);
}

Result<> RealWorld::lock()
{
    const auto& directory = m_settings.runtimeDirectory;
    if (!QDir().mkpath(directory))
        return Failure{QStringLiteral("Cannot make ") + directory};
    m_lock = ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_lock >= 0 && ::flock(m_lock, LOCK_EX | LOCK_NB) == 0)
        return {};
    const auto why =
        errno == EWOULDBLOCK ? QStringLiteral("another lumod has it") : qt_error_string(errno);
    return Failure{QStringLiteral("Cannot lock %1: %2").arg(directory, why)};
}

Result<> RealWorld::open()
{
    if (const auto locked = lock(); !locked)
        return locked;
    if (const auto listening =
            m_events.open(m_settings.runtimeDirectory + QStringLiteral("/events"));
        !listening)
        return listening;
    const auto reading = m_kernel.open();
    if (reading)
        m_cable.update();
    return reading;
}

void RealWorld::take(const QByteArray& datagram)
{
    if (const auto event = parseDhcpEvent(datagram))
        m_cable.take(*event);
    else
        qCWarning(lcLumod) << "An event without an interface, ignoring it";
}

QStringList RealWorld::interfaces() const
{
    return m_cable.exists() ? QStringList{m_settings.wired} : QStringList();
}

InterfaceDetails RealWorld::details(const QString& interface) const
{
    return interface == m_settings.wired ? m_cable.details() : InterfaceDetails();
}

void RealWorld::announce()
{
    if (!m_settings.wired.isEmpty()) {
        Q_EMIT cableChanged(m_cable.isPlugged());
        m_cable.announceStatus();
    }
    for (const auto& name : {m_settings.wireless, m_settings.softAp})
        if (!name.isEmpty())
            Q_EMIT statusChanged(name, InterfaceStatus::Absent);
}

void RealWorld::bringUp(const NetworkConfiguration& configuration)
{
    m_cable.configure(configuration.mode != NetworkMode::Wireless, configuration.wired);
}

void RealWorld::takeDown()
{
    m_cable.configure(false, std::nullopt);
}

void RealWorld::scan()
{
    Q_EMIT failed(QStringLiteral("There is no wireless interface to scan with"));
    Q_EMIT scanned({}); // nobody has to wait for it
}

void RealWorld::reassociate() {}

void RealWorld::startWps(const QString& /*pin*/)
{
    Q_EMIT wpsFailed(QStringLiteral("There is no wireless interface"));
}

// Without a radio there is no soft access point, which the daemon has told who asked.
void RealWorld::startSoftAp(const QString& /*interface*/, const SoftApSettings& /*settings*/) {}

void RealWorld::stopSoftAp(const QString& /*interface*/) {}
