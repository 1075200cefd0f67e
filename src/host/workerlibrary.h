// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

#include <memory>

/// Loads a shared library and has its `worker_create` make a worker. Fails where there is no
/// library, it is none, it belongs to neither root nor the host's user or others may write it, it
/// has no factory or the factory makes nothing. A library stays loaded to the end of the process:
/// values that it made may outlive its worker.
[[nodiscard]] OrvaResult<std::unique_ptr<CMAbstractWorker>>
createWorker(const QString& library, const QVariantHash& config);
