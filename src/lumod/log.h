// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLoggingCategory>

/// The daemon's one logger; it writes to standard error. Keys of networks are never logged.
Q_DECLARE_LOGGING_CATEGORY(lcLumod)

/// Has all that is logged from now on escaped, so that no name of a network or of a client forges a
/// line or rules the terminal.
void escapeLog();
