// SPDX-License-Identifier: Apache-2.0
#include "core/dbglog.h"

#include <ostream>

std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    return stream << orvaLogLine(orvaLogText(text)).toUtf8().constData();
}

CMTraceScope::CMTraceScope(const log4cplus::Logger& logger, const char* signature)
    : m_logger(logger)
    , m_signature(signature)
{
    LOG4CPLUS_TRACE(m_logger, "Enter " << m_signature);
}

CMTraceScope::~CMTraceScope()
{
    LOG4CPLUS_TRACE(m_logger, "Leave " << m_signature);
}
