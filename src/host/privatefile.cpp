// SPDX-License-Identifier: Apache-2.0
#include "privatefile.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char writing[] = ".writing-";

class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    ~Descriptor() { close(); }
    Q_DISABLE_COPY(Descriptor)

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    bool close() { return !isOpen() || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

bool writeAll(int file, const QByteArray& bytes)
{
    for (int done = 0; done < bytes.size();) {
        const auto written =
            ::write(file, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        done += static_cast<int>(written);
    }
    return true;
}

/// Writes a fresh file of a name that begins with `*path`, which gets the whole name.
bool writeFresh(QByteArray* path, const QByteArray& bytes)
{
    path->append("XXXXXX");
    // Makes the file with mode 0600, whatever the umask.
    Descriptor file(::mkostemp(path->data(), O_CLOEXEC));
    return file.isOpen() && writeAll(file.number(), bytes) && ::fsync(file.number()) == 0 &&
           file.close();
}

/// The error that `errno` names.
CMError systemError()
{
    return CMError::failed(QString::fromLocal8Bit(std::strerror(errno)));
}

/// Fails where the file is not to be read.
OrvaResult<void> checkFile(int file, const QString& directory, qint64 limit)
{
    struct stat own = {};
    struct stat parent = {};
    if (::fstat(file, &own) != 0 || ::stat(QFile::encodeName(directory).constData(), &parent) != 0)
        return systemError();
    if (!S_ISREG(own.st_mode))
        return CMError::failed(QStringLiteral("it is no regular file"));
    if (own.st_uid != ::geteuid() && own.st_uid != parent.st_uid)
        return CMError::failed(QStringLiteral("it belongs to the user %1").arg(own.st_uid));
    if (own.st_size > limit)
        return CMError::failed(QStringLiteral("it is larger than %1 bytes").arg(limit));
    return {};
}

bool syncDirectory(const QByteArray& path)
{
    const Descriptor directory(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory.isOpen() && ::fsync(directory.number()) == 0;
}

} // namespace

bool PrivateFile::makeDirectory(const QString& directory)
{
    const QString path = QDir::cleanPath(QDir(directory).absolutePath());
    if (QDir(path).exists())
        return true;
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return (slash <= 0 || makeDirectory(path.left(slash))) &&
           (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0 || errno == EEXIST);
}

OrvaResult<void> PrivateFile::replace(const QString& directory, const QString& name,
                                      const QByteArray& bytes)
{
    const QByteArray folder = QFile::encodeName(directory);
    const QByteArray target = QFile::encodeName(QDir(directory).filePath(name));
    QByteArray fresh = target + writing;
    if (writeFresh(&fresh, bytes) && ::rename(fresh.constData(), target.constData()) == 0 &&
        syncDirectory(folder))
        return {};
    const CMError error = systemError();
    ::unlink(fresh.constData());
    return error;
}

OrvaResult<std::optional<QByteArray>> PrivateFile::read(const QString& directory,
                                                        const QString& name, qint64 limit)
{
    const Descriptor descriptor(
        ::open(QFile::encodeName(QDir(directory).filePath(name)).constData(),
               O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!descriptor.isOpen() && (errno == ENOENT || errno == ENOTDIR))
        return std::optional<QByteArray>();
    if (!descriptor.isOpen())
        return errno == ELOOP ? CMError::failed(QStringLiteral("it is a symbolic link"))
                              : systemError();
    const auto readable = checkFile(descriptor.number(), directory, limit);
    if (!readable)
        return readable.error();
    (void)::fchmod(descriptor.number(), S_IRUSR | S_IWUSR);
    QFile file;
    if (file.open(descriptor.number(), QIODevice::ReadOnly))
        return std::optional(file.read(limit));
    return CMError::failed(file.errorString());
}

int PrivateFile::sweep(const QString& directory, const QString& name)
{
    // Compared by hand: a name filter would be the host's only regular expression.
    const QString stem = name + QLatin1String(writing);
    const QStringList files = QDir(directory).entryList(QDir::Files | QDir::Hidden);
    int removed = 0;
    for (const QString& file : files) {
        if (file.startsWith(stem) && QFile::remove(QDir(directory).filePath(file)))
            ++removed;
    }
    return removed;
}
