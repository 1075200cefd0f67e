// SPDX-License-Identifier: Apache-2.0
#include "memorytrim.h"

#include <malloc.h>

MemoryTrim::MemoryTrim(QObject* parent)
    : QObject(parent)
{
    constexpr int pause = 3000; // ms
    m_timer.setSingleShot(true);
    m_timer.setInterval(pause);
    connect(&m_timer, &QTimer::timeout, this, [] { malloc_trim(0); });
}

void MemoryTrim::prepareProcess()
{
    // The free end of a further thread's arena is kept for ever.
    mallopt(M_ARENA_MAX, 1);
}

void MemoryTrim::note()
{
    if (!m_timer.isActive())
        m_timer.start();
}
