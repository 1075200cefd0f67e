// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/journalstream.h"

#include <QString>

/// The form of Qt's messages on standard error. The journal has a time of its own and takes the
/// priority of syslog(3) instead.
[[nodiscard]] inline QString messagePattern()
{
    if (!leadsToJournal())
        return QStringLiteral("%{time hh:mm:ss.zzz} %{category} %{type}: %{message}");
    return QStringLiteral("%{if-debug}<7>%{endif}%{if-info}<6>%{endif}%{if-warning}<4>%{endif}"
                          "%{if-critical}<3>%{endif}%{if-fatal}<2>%{endif}%{message}");
}
