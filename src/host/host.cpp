// SPDX-License-Identifier: Apache-2.0
#include "host.h"

#include "standins/fixedvalues.h"
#include "standins/powermanager.h"
#include "standins/wifirestarter.h"
#include "workerlibrary.h"

namespace {
ORVA_LOGGER(hostLogger, "Host")
} // namespace

Host::Host(const HostConfig& config, const QDBusConnection& connection)
    : m_config(config)
    , m_control(m_root, connection)
    , m_watchdog(HostControl::serviceName())
{
    connect(&m_control, &HostControl::busLost, this, [this] {
        LOG4CPLUS_ERROR(hostLogger(), "The system bus has gone, the host ends");
        Q_EMIT failed();
    });
    connect(&m_watchdog, &BusWatchdog::deaf, this, [this] {
        LOG4CPLUS_ERROR(hostLogger(), "The host hears nothing from the bus any more, it ends");
        Q_EMIT failed();
    });
    connect(&m_control, &HostControl::heard, &m_watchdog, &BusWatchdog::note);
    connect(&m_control, &HostControl::heard, &m_memory, &MemoryTrim::note);
    connect(&m_root, &CMAbstractWorker::valueChanged, &m_memory, &MemoryTrim::note);
    connect(&m_root, &CMAbstractWorker::rowsChanged, &m_memory, &MemoryTrim::note);
}

bool Host::start()
{
    // First of all, so that a second host ends before it touches anything. Whoever calls in the
    // meantime is answered when the event loop runs.
    const auto started = m_control.start();
    if (!started) {
        LOG4CPLUS_ERROR(hostLogger(),
                        "Couldn't take the host's name on the system bus: " << started.why());
        return false;
    }
    m_watchdog.start();
    addStandIns();
    if (!addLibraries())
        return false;
    m_control.announceChanges();
    for (const CMPath& path : std::as_const(m_config.activate))
        activate(path);
    LOG4CPLUS_INFO(hostLogger(), "The host runs, with " << m_root.nodeInfos().size() << " nodes");
    return true;
}

void Host::addStandIns()
{
    m_root.addWorker(std::make_unique<Settings>(m_config.settings, m_config.stateDirectory));
    m_root.addWorker(createInterfaceNames(m_config.wiredInterface, m_config.wirelessInterface));
    m_root.addWorker(createWebserver(m_config.webserverPort));
    m_root.addWorker(std::make_unique<PowerManager>());
    m_root.addWorker(std::make_unique<WifiRestarter>(QVariantHash()));
}

bool Host::addLibraries()
{
    for (const WorkerConfig& config : std::as_const(m_config.workers)) {
        auto worker = createWorker(config.library, config.config);
        if (worker) {
            LOG4CPLUS_INFO(hostLogger(), "Loaded the worker of " << config.library);
            m_root.addWorker(std::move(*worker));
            continue;
        }
        LOG4CPLUS_ERROR(hostLogger(),
                        "Couldn't load the worker of " << config.library << ": " << worker.why());
        if (config.required)
            return false;
    }
    return true;
}

void Host::activate(const CMPath& path)
{
    const auto reply = CMReply<QVariant>::create();
    reply.onError(this, [path](const CMError& error) {
        LOG4CPLUS_ERROR(hostLogger(), "Couldn't activate " << path << ": " << error);
    });
    m_root.invoke(path, OrvaHash(), reply);
}
