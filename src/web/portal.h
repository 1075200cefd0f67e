// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <optional>

/// What to answer a phone that looks for the internet through the access point, where `path` is one
/// of the known probes' or any other page's: the way to `page` while people have something to do
/// there, else what the probe hopes for. Nothing where it is no probe and nobody is led on.
[[nodiscard]] std::optional<HttpAnswer> portalAnswer(const QByteArray& path, const QByteArray& page,
                                                     bool released);
