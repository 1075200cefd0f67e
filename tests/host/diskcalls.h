// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "literals.h"

#include <QStringList>

#include <cerrno>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// The calls of this program to the disk, in order: its own functions stand before the C library's.
namespace DiskCalls {

inline QStringList made;
/// The call that the disk refuses.
inline QString refused;
/// The file that was made last.
inline int fresh = -1;

/// Notes a call and makes it, where it is not to be refused.
template <class Function, class... Arguments>
auto pass(const char* name, const QString& shown, Function, Arguments... arguments)
{
    made << shown;
    if (shown == refused) {
        errno = EIO;
        return decltype(std::declval<Function>()(arguments...))(-1);
    }
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace DiskCalls

extern "C" {

int mkostemp(char* path, int flags)
{
    return DiskCalls::fresh = DiskCalls::pass("mkostemp", "open"_s, &mkostemp, path, flags);
}

ssize_t write(int file, const void* bytes, size_t count)
{
    if (file == DiskCalls::fresh)
        return DiskCalls::pass("write", "write"_s, &write, file, bytes, count);
    return reinterpret_cast<decltype(&write)>(::dlsym(RTLD_NEXT, "write"))(file, bytes, count);
}

int fsync(int file)
{
    struct stat status = {};
    ::fstat(file, &status);
    const QString shown = S_ISDIR(status.st_mode) ? "sync directory"_s : "sync file"_s;
    return DiskCalls::pass("fsync", shown, &fsync, file);
}

int rename(const char* from, const char* to) noexcept
{
    return DiskCalls::pass("rename", "rename"_s, &rename, from, to);
}

int link(const char* from, const char* to) noexcept
{
    return DiskCalls::pass("link", "link"_s, &link, from, to);
}

} // extern "C"
