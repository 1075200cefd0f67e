// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLoggingCategory>

/// The program's one logger; it writes to standard error. Texts that people typed are never logged.
Q_DECLARE_LOGGING_CATEGORY(lcWeb)
