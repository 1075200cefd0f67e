// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvalogtext.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <iosfwd>

/// Text in a log line, as UTF-8, escaped by `orvaLogText`: no text can forge a line.
ORVA_API std::ostream& operator<<(std::ostream& stream, const QString& text);

/// Defines the function `function`, which answers the logger `name`, for the file or the class in
/// which it stands. The logger is made on first use, when the log is configured. Each file has a
/// function name of its own, so that several can be compiled together.
#define ORVA_LOGGER(function, name)                                                        \
    [[nodiscard]] static inline const log4cplus::Logger& function()                        \
    {                                                                                      \
        static const auto instance = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT(name)); \
        return instance;                                                                   \
    }

/// Traces a function: "Enter " with its signature when created, "Leave " with it when destroyed.
/// Costs a level test where tracing is off.
class ORVA_API CMTraceScope
{
public:
    /// `signature` is `Q_FUNC_INFO` of the function; it and the logger must outlive the guard.
    CMTraceScope(const log4cplus::Logger& logger, const char* signature);
    ~CMTraceScope();
    Q_DISABLE_COPY(CMTraceScope)

private:
    const log4cplus::Logger& m_logger;
    const char* m_signature;
};

/// The guard to open a function with: `const auto trace = dbglog_scopedFunction(anyLogger(),
/// Q_FUNC_INFO);`. The logger must outlive the guard.
[[nodiscard]] inline CMTraceScope dbglog_scopedFunction(const log4cplus::Logger& logger,
                                                        const char* signature)
{
    return CMTraceScope(logger, signature);
}
