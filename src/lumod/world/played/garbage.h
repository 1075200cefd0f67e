// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QVariantMap>

/// Spoils a map as a faulty daemon does.
using Spoiler = QVariantMap (*)(const QVariantMap& map);

/// For "none", "wrong-types", "missing-keys" or "oversized"; null for another text.
Spoiler spoilerFor(const QString& kind);
