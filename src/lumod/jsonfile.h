// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

#include <QVariantMap>

/// Reads a JSON object in which lines that begin with "//" are comments. A failure names file and
/// line.
Result<QVariantMap> readJsonFile(const QString& fileName);
/// The same for the text of `fileName`, without comments.
Result<QVariantMap> readJson(const QByteArray& text, const QString& fileName);
