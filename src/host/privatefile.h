#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Files that nobody but their owner may read, not even for a moment while they are written.
namespace PrivateFile {

/// Makes `directory` and its parents, readable by their owner alone, where they are missing.
[[nodiscard]] bool makeDirectory(const QString& directory);

/// Puts `bytes` in the place of the file `name` of `directory`, whole or not at all: they are
/// written to a file beside it, which takes its place. Returns when the file and the directory are
/// on the disk. False, with the reason in `why`, when the old file stayed.
[[nodiscard]] bool replace(const QString& directory, const QString& name, const QByteArray& bytes,
                           QString* why);

/// The bytes of the file `name` of `directory`, which becomes readable by its owner alone. Nothing,
/// with the reason in `why`, where it is no regular file (a link is not followed, a pipe not waited
/// for), belongs neither to this process's user nor to the directory's, or has more bytes than
/// `limit`; without a reason where there is no file.
[[nodiscard]] std::optional<QByteArray> read(const QString& directory, const QString& name,
                                             qint64 limit, QString* why);

/// Removes what writers of `name` left behind that were killed. Returns how many files it removed.
int sweep(const QString& directory, const QString& name);

} // namespace PrivateFile
