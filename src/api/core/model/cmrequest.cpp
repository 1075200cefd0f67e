#include "core/model/cmrequest.h"

#include <ostream>

CMSetDataRequest::CMSetDataRequest(const CMPath& path, const QString& role, const OrvaValue& value,
                                   const CMReply<QVariant>& reply)
    : m_path(path)
    , m_role(role)
    , m_value(value)
    , m_reply(reply)
{
}

void CMSetDataRequest::answer(const OrvaValue& value) const
{
    m_reply.finish(value.__variant());
}

void CMSetDataRequest::fail(const CMError& error) const
{
    m_reply.setError(error);
}

void CMSetDataRequest::answerAs(const CMVoidReply& finished) const
{
    if (finished.error().isEmpty())
        answer();
    else
        fail(finished.error());
}

std::ostream& operator<<(std::ostream& stream, const CMSetDataRequest& request)
{
    return stream << request.path() << " " << request.role().toUtf8().constData() << " "
                  << request.value();
}
