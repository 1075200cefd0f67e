// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

/// Turns SIGINT and SIGTERM into a signal of the event loop. A second one ends the process at once.
/// One object a process.
class EndSignals : public QObject
{
    Q_OBJECT
public:
    explicit EndSignals(QObject* parent = nullptr);
    ~EndSignals() override;
    Q_DISABLE_COPY(EndSignals)

Q_SIGNALS:
    void received();

private:
    int m_readEnd = -1;
};
