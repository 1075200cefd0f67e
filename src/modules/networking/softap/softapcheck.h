// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaresult.h"
#include "softap/softaptable.h"

// The checks of a request for a soft access point.

/// The error named "error" that a request for a soft access point is refused with.
[[nodiscard]] CMError softApRequestError(const char* text);

/// Refuses a time-out of more than 60 s, and a hold without a time-out.
[[nodiscard]] OrvaResult<void> checkSoftApTimeout(const OrvaNetworkProfileSoftApRequest& request);

/// Refuses a name that is too long, and one that finds the interface's table full.
[[nodiscard]] OrvaResult<void> checkSoftApRequester(const QString& name, const SoftApTable& table);

/// Refuses settings with which no access point can run. The error names the field.
[[nodiscard]] OrvaResult<void>
checkSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);

/// The settings without unknown fields, and with the addresses in normal form. Texts that are no
/// addresses are left out, with a warning.
[[nodiscard]] OrvaNetworkProfileSoftApSettings
normalSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);
