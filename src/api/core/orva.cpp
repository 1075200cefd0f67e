// SPDX-License-Identifier: Apache-2.0
#include "core/orva.h"

#include <QPointer>

namespace {

QPointer<CMAbstractWorker>& root()
{
    static QPointer<CMAbstractWorker> worker;
    return worker;
}

} // namespace

CMAbstractWorker* CMRoot()
{
    return root();
}

void CMSetRoot(CMAbstractWorker* worker)
{
    root() = worker;
}
