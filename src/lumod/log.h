// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLoggingCategory>

/// The daemon's one logger; it writes to standard error. Keys of networks are never logged.
Q_DECLARE_LOGGING_CATEGORY(lcLumod)
