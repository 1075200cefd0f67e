// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

/// The version of this interface. Before 1.0 each minor version has another one.
#define ORVA_API_VERSION "0.2"

/// The mark before the version in a worker's library.
#define ORVA_API_MARK "orva-worker-api="

/// Exports `worker_create`, which makes a `Worker` of the configuration's map, and beside it
/// `worker_api_version`, by which a host of another version refuses the library instead of crashing
/// later. A library without the symbol counts as one of the host's own version. Stands once in a
/// library, outside every namespace.
#define ORVA_WORKER(Worker)                                                                     \
    extern "C" Q_DECL_EXPORT const char worker_api_version[] = ORVA_API_MARK ORVA_API_VERSION;  \
    extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& configuration) \
    {                                                                                           \
        return new Worker(configuration);                                                       \
    }
