// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

/// A directory that one process at a time can have, until this goes or the process ends.
class DirectoryLock
{
public:
    DirectoryLock() = default;
    ~DirectoryLock();
    Q_DISABLE_COPY(DirectoryLock)

    /// Makes the directory where it is missing, and takes it.
    Result<> take(const QString& directory);

private:
    int m_file = -1;
};
