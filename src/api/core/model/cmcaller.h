// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva_global.h"

#include <functional>

class QObject;

/// A client outside of the host's process that made a request: on the bus, a connection. Belongs to
/// the thread of the event loop.
class ORVA_API CMCaller
{
public:
    CMCaller() = default;
    virtual ~CMCaller();
    CMCaller(const CMCaller&) = delete;
    CMCaller& operator=(const CMCaller&) = delete;

    /// Calls `gone` once, from the event loop, when the caller has gone, or soon where it has
    /// already. A context that is gone is not called.
    virtual void whenGone(QObject* context, const std::function<void()>& gone) = 0;
};
