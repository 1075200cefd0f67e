// SPDX-License-Identifier: Apache-2.0
#include "softapkeeper.h"

#include "network/networkpaths.h"

namespace {

using namespace std::chrono_literals;

/// The most that the host grants, and less than half of it.
constexpr auto expiry = 60s;
constexpr auto renewal = 25s;
constexpr auto renewalPatience = 30s;

OrvaNetworkProfileSoftApRequest ownRequest()
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(QStringLiteral("web"));
    return request;
}

} // namespace

SoftApKeeper::SoftApKeeper(HostLink& host)
    : m_host(host)
{
    m_renewTimer.setInterval(renewal);
    connect(&m_renewTimer, &QTimer::timeout, this, [this] { request({}); });
}

void SoftApKeeper::open(const QString& ssid, const HostLink::Done& done)
{
    m_ssid = ssid;
    m_isAskedFor = true;
    m_isDone = false;
    request(done);
    renewOrRest();
}

void SoftApKeeper::close(const HostLink::Done& done)
{
    m_isAskedFor = false;
    m_isDone = true;
    renewOrRest();
    m_host.invoke(OrvaNetworkRevokeSoftApPath(), OrvaValue::of(ownRequest()), renewalPatience,
                  done);
}

void SoftApKeeper::setReaders(int all, int throughSoftAp)
{
    const bool isNew = throughSoftAp > 0 && m_readersThrough == 0;
    m_readers = all;
    m_readersThrough = throughSoftAp;
    if (m_readersThrough == 0)
        m_isDone = false;
    if (isNew && !m_isDone)
        request({});
    renewOrRest();
}

void SoftApKeeper::renewOrRest()
{
    const bool isWanted = m_isAskedFor ? m_readers > 0 : m_readersThrough > 0 && !m_isDone;
    m_isAskedFor = m_isAskedFor && isWanted;
    if (!isWanted)
        m_renewTimer.stop();
    else if (!m_renewTimer.isActive())
        m_renewTimer.start();
}

void SoftApKeeper::request(const HostLink::Done& done)
{
    OrvaNetworkProfileSoftApRequest request = ownRequest();
    request.setTimeout(static_cast<qint32>(std::chrono::milliseconds(expiry).count()));
    if (!m_ssid.isEmpty()) {
        OrvaNetworkProfileSoftApSettings settings;
        settings.setSsid(m_ssid);
        request.setSettings(settings);
    }
    m_host.invoke(
        OrvaNetworkRequestSoftApPath(), OrvaValue::of(request), renewalPatience,
        done ? done : [](const OrvaResult<OrvaValue>&) {});
}
