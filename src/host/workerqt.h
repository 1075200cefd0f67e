// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

/// Fails where a worker's library cannot share this process for the Qt that it was built with.
/// Looks at the file alone: once it were loaded, its Qt would run beside the host's and crash
/// later.
[[nodiscard]] OrvaResult<void> checkQtOf(const QString& library);
