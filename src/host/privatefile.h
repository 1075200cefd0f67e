// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"

#include <QByteArray>

#include <optional>

/// Files that nobody but their owner may read, not even for a moment while they are written.
namespace PrivateFile {

/// Makes `directory` and its parents, readable by their owner alone, where they are missing.
[[nodiscard]] bool makeDirectory(const QString& directory);

/// Puts `bytes` in the place of the file `name` of `directory`, whole or not at all: they are
/// written to a file beside it, which takes its place. Returns when the file and the directory are
/// on the disk. Fails when the old file stayed.
[[nodiscard]] OrvaResult<void> replace(const QString& directory, const QString& name,
                                       const QByteArray& bytes);

/// The bytes of the file `name` of `directory`, which becomes readable by its owner alone;
/// nothing where there is no file. Fails where it is no regular file (a link is not followed, a
/// pipe not waited for), belongs neither to this process's user nor to the directory's, or has more
/// bytes than `limit`.
[[nodiscard]] OrvaResult<std::optional<QByteArray>> read(const QString& directory,
                                                         const QString& name, qint64 limit);

/// Removes what writers of `name` left behind that were killed. Returns how many files it removed.
int sweep(const QString& directory, const QString& name);

} // namespace PrivateFile
