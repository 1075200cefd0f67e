// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

/// Fails where a worker's library cannot share this process for the Qt or for the version of the
/// workers' interface that it was built with. Looks at the file alone: once it were loaded, its Qt
/// would run beside the host's and crash later, and what it misses would be told symbol by symbol.
[[nodiscard]] OrvaResult<void> checkWorkerFile(const QString& library);
