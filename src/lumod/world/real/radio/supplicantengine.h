// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/real/engines/childprocess.h"
#include "world/real/radio/supplicantbus.h"
#include "world/real/realsettings.h"

#include <QTimer>

/// Sees to it that a wpa_supplicant drives one interface: starts one where nobody on the bus is it
/// yet, else uses that one; starts it again when it dies, and has it take the interface.
class SupplicantEngine : public QObject
{
    Q_OBJECT

public:
    /// Both outlive it.
    SupplicantEngine(QString interface, SupplicantBus& bus, const RealSettings& settings);
    ~SupplicantEngine() override;
    Q_DISABLE_COPY(SupplicantEngine)

    /// Wants the interface of that kernel index driven. One that replaces another is taken anew.
    void start(int index);
    /// Wants the interface let go.
    void stop();

    /// The path of the interface's object; empty while there is none.
    [[nodiscard]] QString path() const { return m_path; }
    /// The kernel index of the interface that is wanted, 0 for none.
    [[nodiscard]] int index() const { return m_index; }
    /// Why there is none, for a person; empty while that is only a matter of time.
    [[nodiscard]] QString fault() const { return m_fault; }

    /// Calls `then` only if the object is still the same by then, or as wanted as it is now.
    [[nodiscard]] SupplicantBus::Then inTurn(const SupplicantBus::Then& then) const;

Q_SIGNALS:
    /// There is an object now.
    void ready();
    /// It has gone.
    void lost();
    /// For a person; it goes on trying.
    void failed(const QString& description);

private:
    void find();
    void launch();
    void attach();
    void attached(const QDBusMessage& answer);
    void takeOver();
    void remove(const QVariant& path, const SupplicantBus::Then& then);
    void lose();
    void tell(const QString& fault);
    [[nodiscard]] QString socketDirectory() const;
    [[nodiscard]] QByteArray configuration() const;

    QString m_interface;
    SupplicantBus& m_bus;
    const RealSettings& m_settings;
    QString m_configuration; ///< file name
    ChildProcess m_child;
    QTimer m_retry;
    int m_index = 0;
    int m_turn = 0; ///< counts objects, and attempts to have one
    QString m_path;
    QString m_fault; ///< the last one told, until it is ready
};
