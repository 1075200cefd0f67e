// SPDX-License-Identifier: Apache-2.0
#include "softap/softapactivation.h"

#include "backend/softapinterface.h"

using Request = OrvaNetworkProfileSoftApRequest;
using Settings = OrvaNetworkProfileSoftApSettings;

CMSetDataRequest softApActivation(const CMPath& path, const Request& request)
{
    return {path, OrvaRoles::Activate(), OrvaValue::of(request)};
}

Request softApRequestOf(const OrvaValue& value)
{
    Request request = value.networkSoftApRequest();
    Settings settings = request.settings();
    if (!settings.__contains(Settings::ApInterface())) {
        settings.setApInterface(defaultSoftApInterface());
        request.setSettings(settings);
    }
    return request;
}

Request softApRevocationOf(const OrvaValue& value)
{
    if (value.typeKey() != OrvaValue::String())
        return softApRequestOf(value);
    Request named;
    named.setName(value.string_());
    return softApRequestOf(OrvaValue::of(named));
}
