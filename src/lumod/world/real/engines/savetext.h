// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

#include <QByteArray>

/// Replaces the file `fileName`, or where a link of that name leads, by `text` in one step,
/// readable by everybody. A failure begins with the file's name.
Result<> saveText(const QString& fileName, const QByteArray& text);
/// The same, readable by its owner alone from the first byte on.
Result<> saveSecret(const QString& fileName, const QByteArray& text);
