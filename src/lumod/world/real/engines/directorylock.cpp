// SPDX-License-Identifier: Apache-2.0
#include "world/real/engines/directorylock.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

DirectoryLock::~DirectoryLock()
{
    if (m_file >= 0)
        ::close(m_file);
}

Result<> DirectoryLock::take(const QString& directory)
{
    if (!QDir().mkpath(directory))
        return Failure{QStringLiteral("Cannot make ") + directory};
    m_file = ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_file >= 0 && ::flock(m_file, LOCK_EX | LOCK_NB) == 0)
        return {};
    const auto why =
        errno == EWOULDBLOCK ? QStringLiteral("another lumod has it") : qt_error_string(errno);
    return Failure{QStringLiteral("Cannot lock %1: %2").arg(directory, why)};
}
