// SPDX-License-Identifier: Apache-2.0
#include "log.h"

Q_LOGGING_CATEGORY(lcLumod, "lumod")
