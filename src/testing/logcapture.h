// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

/// Keeps every line that is logged after `install()`.
class LogCapture : public log4cplus::Appender
{
public:
    static LogCapture& install()
    {
        auto* capture = new LogCapture;
        log4cplus::Logger root = log4cplus::Logger::getRoot();
        root.removeAllAppenders();
        root.setLogLevel(log4cplus::ALL_LOG_LEVEL);
        root.addAppender(log4cplus::SharedAppenderPtr(capture));
        return *capture;
    }
    ~LogCapture() override { destructorImpl(); }
    void close() override {}

    /// Forgets the lines.
    void clear() { m_lines.clear(); }

    /// The number of lines that contain `text`.
    [[nodiscard]] int count(const QString& text) const { return m_lines.filter(text).size(); }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        m_lines << QString::fromStdString(event.getMessage());
    }

private:
    QStringList m_lines;
};
