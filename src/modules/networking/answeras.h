#pragma once

#include "core/model/cmrequest.h"

/// Answers `request` as `reply` ends: with success, or with its error.
inline void answerAs(const CMReply<QVariant>& reply, const CMSetDataRequest& request)
{
    reply.addWatcher([request](const CMReply<QVariant>& finished) {
        if (finished.error().isEmpty())
            request.answer();
        else
            request.fail(finished.error());
    });
}
