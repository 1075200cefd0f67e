#include "softap/softaptable.h"

namespace {

auto hasName(const QString& name)
{
    return
        [name](const OrvaNetworkProfileSoftApRequest& request) { return request.name() == name; };
}

} // namespace

void SoftApTable::set(const OrvaNetworkProfileSoftApRequest& request)
{
    const auto old = std::find_if(m_requests.begin(), m_requests.end(), hasName(request.name()));
    if (old != m_requests.end())
        *old = request;
    else
        m_requests.append(request);
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
