#pragma once

#include "network/networkrecords.h"

/// The longest name of a requester, in characters; as that of a module.
constexpr int longestSoftApRequester = 64;

/// How many requesters one interface has at most.
constexpr int mostSoftApRequesters = 64;

/// Why no access point can run as `settings` say, in words for a person that name the field; null
/// where one can.
[[nodiscard]] const char* softApSettingsError(const OrvaNetworkProfileSoftApSettings& settings);

/// The known settings alone, addresses in normal form.
[[nodiscard]] OrvaNetworkProfileSoftApSettings
normalSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);
