// SPDX-License-Identifier: Apache-2.0
#include "networking.h"

extern "C" {

/// The module's one exported entry point: a new network manager, which the host owns.
Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    return new Networking(config);
}
}
