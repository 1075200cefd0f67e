// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/radioswitch.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/rfkill.h>
#include <unistd.h>

RadioSwitch::RadioSwitch(QObject* parent)
    : QObject(parent)
    , m_device(::open("/dev/rfkill", O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    if (m_device < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_device, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &RadioSwitch::read);
}

RadioSwitch::~RadioSwitch()
{
    m_notifier.reset();
    if (m_device >= 0)
        ::close(m_device);
}

/// The kernel hands out one event a call: first of every switch that there is, then of changes.
void RadioSwitch::read()
{
    rfkill_event event{};
    const auto size = ::read(m_device, &event, sizeof event);
    if (size < 0 && errno != EAGAIN && errno != EINTR)
        m_notifier->setEnabled(false); // the device has gone
    if (size < static_cast<ssize_t>(sizeof event))
        return;
    if (event.type != RFKILL_TYPE_WLAN)
        return;
    if (event.op == RFKILL_OP_DEL) {
        m_blocked.remove(event.idx);
        return;
    }
    const bool blocked = event.soft != 0 || event.hard != 0;
    const bool was = m_blocked.value(event.idx);
    m_blocked.insert(event.idx, blocked);
    if (was && !blocked)
        Q_EMIT unblocked();
}
