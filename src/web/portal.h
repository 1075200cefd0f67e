// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <optional>

/// The answer that RFC 8908 has a phone ask for: whether people have something to do at `page`
/// first.
[[nodiscard]] HttpAnswer captiveAnswer(const QByteArray& page, bool released);

/// The answer to a phone that asks for `path` through the access point: a redirection to `page`
/// while people have something to do there, else the success that a known probe hopes for. Nothing
/// where `path` is no probe's and nobody is to be led to the page.
[[nodiscard]] std::optional<HttpAnswer> portalAnswer(const QByteArray& path, const QByteArray& page,
                                                     bool released);
