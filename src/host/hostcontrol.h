// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "buscall.h"
#include "buscallers.h"
#include "bussieve.h"
#include "callerturns.h"
#include "common/bustypes.h"

#include <QDBusContext>

/// The control interface: shows the node tree on the bus as `org.orva.Host1`.
///
/// Foreign values become plain ones here and are checked against the known fields. Secret
/// nodes are for root and the host's own user alone. The slots are called by the adaptor that is
/// generated from the interface's description; what they return is not used, since every call is
/// answered through its `BusCall`.
class HostControl : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_PROPERTY(QString Version READ version)
public:
    /// `root` must outlive the control.
    HostControl(CMAbstractWorker& root, const QDBusConnection& connection);

    /// Takes the name on the bus. Calls are answered as soon as the event loop runs. False, with
    /// the reason in `why`, where the name is taken or the bus refuses it.
    [[nodiscard]] OrvaResult<void> start();

    /// Tells every change from now on. What the nodes hold first nobody can have seen otherwise:
    /// who comes reads it.
    void announceChanges();

    /// The name on the bus.
    [[nodiscard]] static QString serviceName();

    [[nodiscard]] QString version() const;

    QVariantMap GetValue(const QString& path);
    void SetValue(const QString& path, const OrvaBusValue& value);
    QVariantMap Invoke(const QString& path, const OrvaBusValue& value);
    OrvaBusRows GetRows(const QString& path);
    OrvaBusNodes ListNodes();

Q_SIGNALS:
    void ValueChanged(const QString& path, const QVariantMap& value);
    void RowsChanged(const QString& path);
    /// Something came from the bus, a while after the last time that this was told.
    void heard();
    /// The bus has gone, and it does not come back to this process.
    void busLost();

private Q_SLOTS:
    void on_disconnected();

private:
    using Action = std::function<void(const BusCall& call)>;
    /// Performs `action` with the current call when it is its caller's turn, if the caller may
    /// touch the node at `path`.
    void admit(const CMPath& path, CallerTurns::Work work, const Action& action);
    /// The same for an action that takes a value from the bus.
    void admitValue(const CMPath& path, CallerTurns::Work work, const OrvaBusValue& foreign,
                    const std::function<void(const BusCall& call, const OrvaValue& value)>& action);

    void announce(const CMPath& path, const OrvaValue& value);

    CMAbstractWorker& m_root;
    QDBusConnection m_connection;
    BusCallers m_callers;
    CallerTurns m_turns;
};
