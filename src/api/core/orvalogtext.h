// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva_global.h"

#include <QString>
#include <QVariant>

/// True if a field of this name holds a key or passphrase, which no log may show.
[[nodiscard]] ORVA_API bool orvaIsSecretKey(const QString& key);

/// Text as it may stand in one line of a log or on a terminal: control characters (the 8-bit ones
/// too), separators of lines and marks that turn the direction of text as `\u` and four hexadecimal
/// digits, as JSON has them.
[[nodiscard]] ORVA_API QString orvaLogText(const QString& text);

/// The part of a text that one line of a log takes: all of it up to 65536 characters, else its
/// beginning and its length.
[[nodiscard]] ORVA_API QString orvaLogLine(const QString& text);

/// Any plain value as one line for a log: keys in alphabetical order, secrets as "****".
[[nodiscard]] ORVA_API QString orvaToLog(const QVariant& value);
