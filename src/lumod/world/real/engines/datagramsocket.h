// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// A socket in the file system, for root alone, to which engines and their event programs send
/// datagrams.
class DatagramSocket : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    /// Closes and removes it.
    ~DatagramSocket() override;
    Q_DISABLE_COPY(DatagramSocket)

    /// Makes the socket `fileName`, in place of what stands there and of the one that was open.
    Result<> open(const QString& fileName);
    /// Closes and removes it.
    void close();
    /// Sends a datagram. False when the socket `to` does not take it, or not at once.
    [[nodiscard]] bool send(const QByteArray& datagram, const QString& to);

Q_SIGNALS:
    void received(const QByteArray& datagram);

private:
    void read();

    QByteArray m_path;
    int m_socket = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
