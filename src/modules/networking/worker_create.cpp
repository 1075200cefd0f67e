#include "networking.h"

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(const QVariantHash& config)
{
    return new Networking(config);
}
