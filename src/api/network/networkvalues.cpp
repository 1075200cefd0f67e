// SPDX-License-Identifier: Apache-2.0
#include "network/networkrecords.h"

ORVA_NETWORK_VALUES(ORVA_VALUE_DEFINITION)
