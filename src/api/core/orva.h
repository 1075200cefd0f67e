// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/dbglog.h"
#include "core/model/cmabstractworker.h"
#include "core/model/cmnodesworker.h"
#include "core/model/cmvalueitem.h"
#include "core/model/nodes/cmactivatenode.h"
#include "core/model/nodes/cmlistrowsnode.h"
#include "core/model/nodes/cmvaluenode.h"
#include "core/orvaplainvalue.h"
#include "core/orvavalue.h"

/// The root worker: all reads and writes of other workers' nodes go through it. Null outside the
/// time in which the host has one.
[[nodiscard]] ORVA_API CMAbstractWorker* CMRoot();

/// Makes `root` the root worker; null ends it. For the host alone, which owns the worker.
ORVA_API void CMSetRoot(CMAbstractWorker* root);

extern "C" {
/// The function that a worker's library exports as `worker_create`. It gives a new worker, which
/// the host owns.
using OrvaWorkerCreate = CMAbstractWorker* (*)(const QVariantHash& config);
}
