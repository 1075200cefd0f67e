// SPDX-License-Identifier: Apache-2.0
#include "hostlog.h"

#include "common/journalstream.h"
#include "core/dbglog.h"

#include <log4cplus/configurator.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/spi/loggingevent.h>

#include <QHash>

#include <iostream>

#include <syslog.h>

namespace {

ORVA_LOGGER(qtLogger, "Qt")

log4cplus::LogLevel levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return log4cplus::DEBUG_LOG_LEVEL;
    case QtInfoMsg:
        return log4cplus::INFO_LOG_LEVEL;
    case QtWarningMsg:
        return log4cplus::WARN_LOG_LEVEL;
    case QtCriticalMsg:
        return log4cplus::ERROR_LOG_LEVEL;
    case QtFatalMsg:
        return log4cplus::FATAL_LOG_LEVEL;
    }
    return log4cplus::ERROR_LOG_LEVEL;
}

void logQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    qtLogger().log(levelOf(type), orvaLogLine(orvaLogText(text)).toStdString());
}

/// The journal's own form: the priority of syslog(3) first, and no time.
class JournalLayout : public log4cplus::Layout
{
public:
    void formatAndAppend(log4cplus::tostream& output,
                         const log4cplus::spi::InternalLoggingEvent& event) override
    {
        output << '<' << priorityOf(event.getLogLevel()) << '>' << event.getLoggerName() << ": "
               << event.getMessage() << '\n';
    }

private:
    static int priorityOf(log4cplus::LogLevel level)
    {
        if (level >= log4cplus::FATAL_LOG_LEVEL)
            return LOG_CRIT;
        if (level >= log4cplus::ERROR_LOG_LEVEL)
            return LOG_ERR;
        if (level >= log4cplus::WARN_LOG_LEVEL)
            return LOG_WARNING;
        return level >= log4cplus::INFO_LOG_LEVEL ? LOG_INFO : LOG_DEBUG;
    }
};

std::unique_ptr<log4cplus::Layout> layout()
{
    if (leadsToJournal())
        return std::make_unique<JournalLayout>();
    return std::make_unique<log4cplus::PatternLayout>(
        LOG4CPLUS_TEXT("%D{%Y-%m-%d %H:%M:%S.%q} %-5p %c: %m%n"));
}

} // namespace

HostLog::HostLog()
{
    // A line is one write, so that those of other programs do not stand within it.
    std::ios_base::sync_with_stdio(false);
    std::cerr.unsetf(std::ios_base::unitbuf);
    // Nothing is logged asynchronously; the smallest pool is one idle thread.
    log4cplus::setThreadPoolSize(0);
    log4cplus::SharedAppenderPtr appender(new log4cplus::ConsoleAppender(true, true));
    appender->setLayout(layout());
    log4cplus::Logger::getRoot().addAppender(appender);
    setLevel(log4cplus::INFO_LOG_LEVEL);
    qInstallMessageHandler(logQtMessage);
}

HostLog::~HostLog()
{
    qInstallMessageHandler(nullptr);
}

std::optional<log4cplus::LogLevel> HostLog::levelOf(const QString& name)
{
    static const QHash<QString, log4cplus::LogLevel> levels = {
        {QStringLiteral("trace"), log4cplus::TRACE_LOG_LEVEL},
        {QStringLiteral("debug"), log4cplus::DEBUG_LOG_LEVEL},
        {QStringLiteral("info"), log4cplus::INFO_LOG_LEVEL},
        {QStringLiteral("warn"), log4cplus::WARN_LOG_LEVEL},
        {QStringLiteral("error"), log4cplus::ERROR_LOG_LEVEL}};
    const auto level = levels.constFind(name);
    return level != levels.constEnd() ? std::optional(*level) : std::nullopt;
}

void HostLog::setLevel(log4cplus::LogLevel level)
{
    log4cplus::Logger::getRoot().setLogLevel(level);
}
