// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>

namespace ctl {

/// The text by which a phone joins a network, as its camera reads it from a QR code; an empty key
/// for an open network.
[[nodiscard]] QString wifiText(const QString& ssid, const QString& key);

/// The text as a QR code of half blocks, two rows of the code a line, with its margin: ink is what
/// is dark where `inkIsDark`, else what is light, as on a terminal with a dark ground. Empty for a
/// text that is too long.
[[nodiscard]] QStringList qrLines(const QString& text, bool inkIsDark);

} // namespace ctl
