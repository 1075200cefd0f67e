// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmrequest.h"

#include <ostream>

namespace {

struct PathOf
{
    template <class Request>
    CMPath operator()(const Request& request) const
    {
        return request.path;
    }
    CMPath operator()(const CMSetDataRequest& request) const { return request.path(); }
};

struct Fail
{
    const CMError& error;

    template <class Request>
    void operator()(const Request& request) const
    {
        request.reply.setError(error);
    }
    void operator()(const CMSetDataRequest& request) const { request.fail(error); }
};

} // namespace

CMSetDataRequest::CMSetDataRequest(const CMPath& path, const QString& role, const OrvaValue& value,
                                   const CMReply<QVariant>& reply)
    : m_path(path)
    , m_role(role)
    , m_value(value)
    , m_reply(reply)
{
}

std::shared_ptr<CMCaller> CMSetDataRequest::caller() const
{
    return m_reply ? m_reply.data()->caller() : nullptr;
}

void CMSetDataRequest::answer(const OrvaValue& value) const
{
    m_reply.finish(value.__variant());
}

void CMSetDataRequest::fail(const CMError& error) const
{
    m_reply.setError(error);
}

void CMSetDataRequest::answerAs(const CMVoidReply& reply) const
{
    reply.addWatcher([request = *this](const CMVoidReply& finished) {
        if (finished.error().isEmpty())
            request.answer();
        else
            request.fail(finished.error());
    });
}

CMPath orvaPathOf(const CMRequest& request)
{
    return std::visit(PathOf(), request);
}

void orvaFail(const CMRequest& request, const CMError& error)
{
    std::visit(Fail{error}, request);
}

std::ostream& operator<<(std::ostream& stream, const CMSetDataRequest& request)
{
    return stream << request.path() << " " << request.role().toUtf8().constData() << " "
                  << request.value();
}
