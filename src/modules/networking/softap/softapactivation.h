// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmrequest.h"
#include "network/networkrecords.h"

// The form of a request for a soft access point as an activation, there and back.

/// The worker's own activation of one of its soft-AP nodes, which wants no answer.
[[nodiscard]] CMSetDataRequest softApActivation(const CMPath& path,
                                                const OrvaNetworkProfileSoftApRequest& request);

/// The request that a value carries; for the default interface where it names none.
[[nodiscard]] OrvaNetworkProfileSoftApRequest softApRequestOf(const OrvaValue& value);

/// The same for a revocation, which may be the plain name of the requester.
[[nodiscard]] OrvaNetworkProfileSoftApRequest softApRevocationOf(const OrvaValue& value);
