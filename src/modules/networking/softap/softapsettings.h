// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "softap/softaptable.h"

/// The settings with each field taken from `first` where it is present there, else from `second`,
/// else absent.
[[nodiscard]] OrvaNetworkProfileSoftApSettings
mergeSoftApSettings(const OrvaNetworkProfileSoftApSettings& first,
                    const OrvaNetworkProfileSoftApSettings& second);

/// The running settings that stay when the requests change: all fields but the vendor-specific
/// data, which lives only while a request or the configuration supplies it.
[[nodiscard]] OrvaNetworkProfileSoftApSettings
stickySoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);

/// The settings as they are published: the pass phrase is "****".
[[nodiscard]] OrvaNetworkProfileSoftApSettings
maskedSoftApSettings(const OrvaNetworkProfileSoftApSettings& settings);

/// The SSID of a device's own soft AP: the configured one, "_" and the MAC without its colons. The
/// configured one is cut, between characters, where all would pass the 32 bytes of an SSID.
[[nodiscard]] QString ownSoftApSsid(const QString& configured, const QString& mac);

/// The outcome of the live requests of one interface.
struct SoftApFold
{
    OrvaNetworkProfileSoftApSettings settings;
    /// Some request asks for the settings to be held.
    bool hold = false;
};

/// Folds the requests, in their order, over what runs and what is configured: a field of a later
/// request overrides that of an earlier one, a request overrides what runs, and what runs overrides
/// the configuration.
[[nodiscard]] SoftApFold foldSoftApRequests(const OrvaNetworkProfileSoftApSettings& running,
                                            const OrvaNetworkProfileSoftApSettings& configured,
                                            const SoftApTable& table);
