// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

/// True if standard error leads to the journal, which notes the time by itself and reads a priority
/// from the line's beginning (`<3>`). The variable alone does not say so, since a child that
/// inherits it may have its standard error elsewhere.
inline bool leadsToJournal()
{
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat error = {};
    if (!stream || ::fstat(STDERR_FILENO, &error) != 0)
        return false;
    char own[64];
    std::snprintf(own, sizeof own, "%llu:%llu", static_cast<unsigned long long>(error.st_dev),
                  static_cast<unsigned long long>(error.st_ino));
    return std::strcmp(stream, own) == 0;
}
