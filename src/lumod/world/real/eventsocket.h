#pragma once

#include "failure.h"
#include "world/real/dhcpevent.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// The socket to which engines' event programs send their datagrams; for root alone.
class EventSocket : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    /// Closes and removes it.
    ~EventSocket() override;
    Q_DISABLE_COPY(EventSocket)

    /// Makes the socket `fileName`, in place of what stands there.
    Result<> open(const QString& fileName);

Q_SIGNALS:
    void received(const DhcpEvent& event);

private:
    void read();

    QByteArray m_path;
    int m_socket = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
