// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTimer>

/// Gives memory that a burst of work left unused back to the system, some seconds after the burst
/// began.
///
/// The allocator keeps what lies below its last block in use: without this, one message of ten
/// megabytes that is long forgotten leaves tens of them resident.
class MemoryTrim : public QObject
{
    Q_OBJECT
public:
    explicit MemoryTrim(QObject* parent = nullptr);

    /// Makes the memory of all threads one that can be given back. To be called before the first
    /// thread begins.
    static void prepareProcess();

    /// Something was worked on: looks after the memory in a while. Nothing wakes up where nothing
    /// was noted.
    void note();

private:
    QTimer m_timer;
};
