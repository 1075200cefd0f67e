// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <log4cplus/initializer.h>
#include <log4cplus/loglevel.h>

#include <QString>

#include <optional>

/// Logs to standard error for as long as it lives: a line an event, with time and level; where
/// that is the journal, with its priority instead. Qt's own messages go there too.
class HostLog
{
public:
    HostLog();
    ~HostLog();
    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;

    /// The level of that name (trace, debug, info, warn, error).
    [[nodiscard]] static std::optional<log4cplus::LogLevel> levelOf(const QString& name);
    /// Leaves out what is below the level.
    static void setLevel(log4cplus::LogLevel level);

private:
    log4cplus::Initializer m_initializer;
};
