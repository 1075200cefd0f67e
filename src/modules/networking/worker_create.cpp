// SPDX-License-Identifier: Apache-2.0
#include "core/orvaworker.h"
#include "networking.h"

ORVA_WORKER(Networking)
