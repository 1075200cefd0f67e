// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArrayMatcher>
#include <QObject>
#include <QSocketNotifier>

#include <array>
#include <memory>

class CMSetDataRequest;
class OrvaValue;

/// Asks the power manager to wake the device when a magic packet for its current MAC address
/// arrives.
///
/// Listens on two packet sockets, over all interfaces: for frames of EtherType 0x0842 and for UDP
/// datagrams to port 9. A client switches both on and off by an activate node; at first they are
/// off. Without the right to open packet sockets they stay off. Lives on the host's event-loop
/// thread.
class WakeOnLan : public QObject
{
    Q_OBJECT

public:
    explicit WakeOnLan(QObject* parent);
    /// Closes the sockets.
    ~WakeOnLan() override;

public Q_SLOTS:
    /// Begins to follow the current MAC address.
    void on_init();
    /// Takes the MAC address, a string, into the pattern. A value that is no such address is
    /// ignored.
    void on_macChanged(const OrvaValue& value);
    /// Switches listening by a bool. Always answers with success.
    void on_setEnabled(const CMSetDataRequest& request);

private:
    void enableEtherwake();
    void disableEtherwake();
    void enableWakeOnLan();
    void disableWakeOnLan();
    [[nodiscard]] std::unique_ptr<QSocketNotifier> watch(int socket);
    void on_internal_wake(int socket);
    [[nodiscard]] bool isCandidate(int socket, std::size_t size) const;
    void wake();

    static constexpr int closed = -1;

    int m_etherwakeSocket = closed;
    int m_wakeOnLanSocket = closed;
    std::unique_ptr<QSocketNotifier> m_etherwakeNotifier;
    std::unique_ptr<QSocketNotifier> m_wakeOnLanNotifier;
    QByteArrayMatcher m_matcher;        ///< The magic pattern; empty until a MAC address is known.
    std::array<uchar, 1514> m_buffer{}; ///< One packet: the largest frame without its checksum.
};
