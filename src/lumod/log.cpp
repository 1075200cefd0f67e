// SPDX-License-Identifier: Apache-2.0
#include "log.h"

#include "api/core/orvaescape.h"

namespace {

QtMessageHandler writeLine = nullptr;

void writeEscaped(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    writeLine(type, context, orvaEscape(text));
}

} // namespace

Q_LOGGING_CATEGORY(lcLumod, "lumod")

void escapeLog()
{
    writeLine = qInstallMessageHandler(writeEscaped);
}
