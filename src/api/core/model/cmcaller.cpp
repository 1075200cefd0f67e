// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmcaller.h"

CMCaller::~CMCaller() = default;
