// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// The checksum digit, 0 to 9, that completes the seven digits of `number` (0 to 9999999) to a WPS
/// PIN.
[[nodiscard]] int wpsPinChecksum(quint32 number);

/// The WPS PIN made of the seven digits of `number` (0 to 9999999) and their checksum digit: 8
/// digits.
[[nodiscard]] QString wpsPin(quint32 number);

/// True for a text that may be handed to a WPS session: exactly 8 ASCII digits. The checksum digit
/// is not verified, since some routers show PINs that have none.
[[nodiscard]] bool isWpsPin(const QString& text);
