// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHostAddress>
#include <QObject>
#include <QVector>

class QSocketNotifier;

/// The addresses of a host's name, the best first.
///
/// The system's resolver blocks for as long as a name server is silent. It is asked on a thread
/// that nobody waits for, neither this object nor the end of the process.
class NameLookup : public QObject
{
    Q_OBJECT
public:
    /// Asks at once. At most four names are asked for at a time; of one more nothing is found.
    NameLookup(const QString& name, QObject* parent);
    ~NameLookup() override;

Q_SIGNALS:
    /// Comes once, at most eight addresses; none where there is no answer.
    void found(const QVector<QHostAddress>& addresses);

private:
    void read();

    int m_answer = -1; ///< Socket on which the thread tells the addresses, as texts.
    QSocketNotifier* m_answered = nullptr;
};
