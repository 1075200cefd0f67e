// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// The switches of this machine's wireless radios, as /dev/rfkill tells them. A machine without
/// that has no switches.
class RadioSwitch : public QObject
{
    Q_OBJECT

public:
    explicit RadioSwitch(QObject* parent = nullptr);
    ~RadioSwitch() override;
    Q_DISABLE_COPY(RadioSwitch)

Q_SIGNALS:
    /// A radio that was switched off is on again.
    void unblocked();

private:
    void read();

    int m_device = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<quint32, bool> m_blocked; ///< by the switch's number
};
