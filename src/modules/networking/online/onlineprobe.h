// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "online/onlinerules.h"

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
    void read();
    void end();

    const QString m_body;
    QByteArray m_answer;
    bool m_finished = false;
    QTcpSocket m_socket{this};
    QTimer m_deadline{this};
};
