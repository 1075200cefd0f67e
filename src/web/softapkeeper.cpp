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
    connect(&m_renewTimer, &QTimer::timeout, this, &SoftApKeeper::renew);
}

void SoftApKeeper::open(const OrvaNetworkProfileSoftApSettings& settings,
                        const HostLink::Done& done)
{
    QVariantHash asked = m_expiry.hasExpired() ? QVariantHash() : m_settings.__hash();
    const QVariantHash& changes = settings.__hash();
    for (auto change = changes.begin(); change != changes.end(); ++change)
        asked.insert(change.key(), change.value());
    m_isAskedFor = true;
    m_isDone = false;
    // Our own hold would have our change wait, too: the next renewal holds it again.
    const OrvaNetworkProfileSoftApSettings wanted(asked);
    request(wanted, false, [this, wanted, done](const OrvaResult<OrvaValue>& answer) {
        if (answer)
            m_settings = wanted;
        done(answer);
    });
    renewOrRest();
}

void SoftApKeeper::close(const HostLink::Done& done)
{
    m_isAskedFor = false;
    m_isDone = true;
    m_settings = {};
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
        renew();
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

void SoftApKeeper::renew()
{
    // A reader who comes when our request is over came by an access point with others' settings.
    if (m_expiry.hasExpired())
        m_settings = {};
    request(m_settings, m_readersThrough > 0, [](const OrvaResult<OrvaValue>&) {});
}

void SoftApKeeper::request(const OrvaNetworkProfileSoftApSettings& settings, bool hold,
                           const HostLink::Done& done)
{
    OrvaNetworkProfileSoftApRequest request = ownRequest();
    request.setTimeout(static_cast<qint32>(std::chrono::milliseconds(expiry).count()));
    request.setHoldSoftAp(hold);
    request.setBound(true);
    request.setSettings(settings);
    m_expiry.setRemainingTime(std::chrono::milliseconds(expiry).count());
    m_host.invoke(OrvaNetworkRequestSoftApPath(), OrvaValue::of(request), renewalPatience, done);
}
