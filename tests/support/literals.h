// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// A text from UTF-8.
inline QString operator""_s(const char* text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}
