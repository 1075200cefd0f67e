// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <qglobal.h>

/// Marks what the host's libraries export. Everything else of a library is hidden.
#define ORVA_API Q_DECL_EXPORT
