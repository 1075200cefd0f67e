#pragma once

#include <QString>

/// Why a worker's library cannot share this process for the Qt that it was built with; empty when
/// it can. Looks at the file alone: once it were loaded, its Qt would run beside the host's and
/// crash later.
[[nodiscard]] QString foreignQtOf(const QString& library);
