// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaresult.h"
#include "softap/softaptable.h"

// What a request for a soft access point must be, and why it is refused.

/// The error named "error" that a request for a soft access point is refused with.
[[nodiscard]] CMError softApRequestError(const char* text);

/// Whether the request's time-out can be kept: at most 60 s, and some where it holds the settings.
[[nodiscard]] OrvaResult<void> checkSoftApTimeout(const OrvaNetworkProfileSoftApRequest& request);

/// Whether the requester has a place among those of the interface's table.
[[nodiscard]] OrvaResult<void> checkSoftApRequester(const QString& name, const SoftApTable& table);

/// Whether an access point can run as the settings say. The error names the field.
[[nodiscard]] OrvaResult<void>
checkSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);

/// The known settings alone, addresses in normal form.
[[nodiscard]] OrvaNetworkProfileSoftApSettings
normalSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);
