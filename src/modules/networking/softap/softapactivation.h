#pragma once

#include "core/model/cmrequest.h"
#include "network/networkrecords.h"

/// The worker's own activation of one of its soft-AP nodes, which wants no answer.
[[nodiscard]] inline CMSetDataRequest
softApActivation(const CMPath& path, const OrvaNetworkProfileSoftApRequest& request)
{
    OrvaValue value;
    value.setNetworkSoftApRequest(request);
    return {path, OrvaRoles::Activate(), value};
}
