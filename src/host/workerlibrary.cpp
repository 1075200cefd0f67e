#include "workerlibrary.h"

#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

std::unique_ptr<CMAbstractWorker> createWorker(const QString& library, const QVariantHash& config,
                                               QString* why)
{
    // A bare name would be searched for, and what is found need not be what was meant.
    if (!QFileInfo(library).isAbsolute()) {
        *why = QStringLiteral("\"%1\" is not an absolute path").arg(library);
        return nullptr;
    }
    QLibrary file(library);
    file.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    const auto create = reinterpret_cast<OrvaWorkerCreate>(file.resolve("worker_create"));
    if (!create) {
        *why = file.isLoaded() ? QStringLiteral("it has no worker_create") : file.errorString();
        return nullptr;
    }
    std::unique_ptr<CMAbstractWorker> worker(create(config));
    if (!worker)
        *why = QStringLiteral("its worker_create made no worker");
    return worker;
}
