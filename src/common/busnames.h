// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>

/// Has QtDBus note the names that the bus gave to the connection before anything else is asked of
/// it. To be called before the event loop runs, from the thread that made the connection, whose
/// first act in the loop it becomes, unless something was posted there already; `context` lives on
/// that thread, and nothing happens once it is gone.
///
/// QtDBus notes the names in a thread of its own, without a lock and only once the loop has begun;
/// a call that is sent meanwhile reads them here, from memory that the other thread may have freed.
inline void settleBusNames(const QDBusConnection& connection, QObject* context)
{
    const auto settle = [bus = connection.interface()] {
        // In the first turn of that thread the connection may deliver, in the second it delivers
        // what waited, and in the third whoever it was delivered to has done with it.
        for (int turn = 0; turn < 3; ++turn)
            QMetaObject::invokeMethod(
                bus, [] {}, Qt::BlockingQueuedConnection);
    };
    QMetaObject::invokeMethod(context, settle, Qt::QueuedConnection);
}
