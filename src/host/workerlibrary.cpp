// SPDX-License-Identifier: Apache-2.0
#include "workerlibrary.h"

#include "workerfile.h"

#include <QFileInfo>
#include <QLibrary>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// True when nobody but root and the host's own user decides what the library does. A group counts
/// as its user's own where it is root's or the host's.
bool isTrusted(const QString& library)
{
    struct stat file = {};
    if (::stat(library.toLocal8Bit().constData(), &file) != 0)
        return true; // The loader says what is wrong with it.
    const bool ownGroup = file.st_gid == 0 || file.st_gid == ::getegid();
    const mode_t others = ownGroup ? S_IWOTH : S_IWOTH | S_IWGRP;
    return (file.st_uid == 0 || file.st_uid == ::geteuid()) && (file.st_mode & others) == 0;
}

} // namespace

OrvaResult<std::unique_ptr<CMAbstractWorker>> createWorker(const QString& library,
                                                           const QVariantHash& config)
{
    // A bare name would be searched for, and what is found need not be what was meant.
    if (!QFileInfo(library).isAbsolute())
        return CMError::failed(QStringLiteral("\"%1\" is not an absolute path").arg(library));
    if (!isTrusted(library))
        return CMError::failed(
            QStringLiteral("others than root and the host's user may change it"));
    const auto fits = checkWorkerFile(library);
    if (!fits)
        return fits.error();
    QLibrary file(library);
    file.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    const auto create = reinterpret_cast<OrvaWorkerCreate>(file.resolve("worker_create"));
    if (!create)
        return CMError::failed(file.isLoaded() ? QStringLiteral("it has no worker_create")
                                               : file.errorString());
    std::unique_ptr<CMAbstractWorker> worker(create(config));
    if (!worker)
        return CMError::failed(QStringLiteral("its worker_create made no worker"));
    return worker;
}
