// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "online/onlinerules.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>

/// One question to a server beyond the gateway, by HTTP. Takes 10 seconds and reads 16 KiB at most.
class OnlineProbe : public QObject
{
    Q_OBJECT
public:
    /// Asks at once.
    OnlineProbe(const QUrl& url, const QString& body, QObject* parent);

Q_SIGNALS:
    /// Comes once.
    void finished(ProbeOutcome outcome);

private:
    /// Tries the next of the server's addresses; the last one has been tried in vain.
    void tryNext();
    void read();
    void end(bool inTime = true);

    const quint16 m_port;
    const QString m_body;
    QVector<QHostAddress> m_addresses; ///< Those that are still to be tried.
    QByteArray m_answer;
    bool m_finished = false;
    QTcpSocket m_socket{this};
    QTimer m_deadline{this};
};
