// SPDX-License-Identifier: Apache-2.0
#include "softap/softaptable.h"

namespace {

auto hasName(const QString& name)
{
    return [name](const LiveSoftApRequest& live) { return live.request.name() == name; };
}

} // namespace

void SoftApTable::set(const LiveSoftApRequest& live)
{
    const auto old =
        std::find_if(m_requests.begin(), m_requests.end(), hasName(live.request.name()));
    if (old != m_requests.end())
        *old = live;
    else
        m_requests.append(live);
}

void SoftApTable::bind(const QString& name, const std::shared_ptr<QObject>& binding)
{
    const auto live = std::find_if(m_requests.begin(), m_requests.end(), hasName(name));
    if (live != m_requests.end())
        live->binding = binding;
}

bool SoftApTable::contains(const QString& name) const
{
    return std::any_of(m_requests.begin(), m_requests.end(), hasName(name));
}

void SoftApTable::remove(const QString& name)
{
    m_requests.erase(std::remove_if(m_requests.begin(), m_requests.end(), hasName(name)),
                     m_requests.end());
}
