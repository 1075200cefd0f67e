// SPDX-License-Identifier: Apache-2.0
#include "eventstream.h"

#include <cstring>
#include <utility>

#include <microhttpd.h>

namespace {

constexpr size_t blockBytes = 4096;

} // namespace

EventStream::EventStream(MHD_Connection* connection, const QHostAddress& local,
                         const QHostAddress& peer, QByteArray beginning, Owner owner)
    : m_connection(connection)
    , m_local(local)
    , m_peer(peer)
    , m_owner(std::move(owner))
    , m_sending(std::move(beginning))
{
}

MHD_Response* EventStream::response()
{
    return MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, blockBytes, &read, this, &end);
}

void EventStream::put(const QByteArray& event, const QByteArray& data)
{
    m_waiting.insert(event, data);
    wake();
}

void EventStream::wake()
{
    if (std::exchange(m_isSuspended, false))
        m_owner.resume(m_connection);
}

ssize_t EventStream::read(void* self, uint64_t, char* buffer, size_t size)
{
    auto* stream = static_cast<EventStream*>(self);
    QByteArray& sending = stream->m_sending;
    for (auto event = stream->m_waiting.cbegin(); event != stream->m_waiting.cend(); ++event)
        sending += "event: " + event.key() + "\ndata: " + event.value() + "\n\n";
    stream->m_waiting.clear();
    if (sending.isEmpty()) {
        stream->m_isSuspended = true;
        MHD_suspend_connection(stream->m_connection);
        return 0;
    }
    const int count = static_cast<int>(qMin<qint64>(sending.size(), static_cast<qint64>(size)));
    std::memcpy(buffer, sending.constData(), static_cast<size_t>(count));
    sending.remove(0, count);
    return count;
}

void EventStream::end(void* self)
{
    auto* stream = static_cast<EventStream*>(self);
    stream->m_owner.ended(stream);
    delete stream;
}
