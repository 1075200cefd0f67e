// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "settingsfile.h"

#include <QQueue>

/// A setting's path and the value that it has until one is stored, which fixes its type.
struct SettingDefault
{
    CMPath path;
    OrvaValue value;
};

/// The settings: a value node for each, whose writes are on the disk before they are answered.
///
/// The writes of one turn of the event loop are stored together, at its end or as soon as the
/// answer to one of them is waited for. A write that cannot be stored is refused and changes
/// nothing; a node tells whether that is so. Profiles are secret nodes: they hold keys.
class Settings : public CMNodesWorker
{
    Q_OBJECT
public:
    /// Values are kept in a file of `directory`.
    Settings(const QVector<SettingDefault>& defaults, const QString& directory);

    /// Stores what is still waiting.
    ~Settings() override;
    Q_DISABLE_COPY(Settings)

    void getDataRequest(const CMGetDataRequest& request) override;
    void setDataRequest(const CMSetDataRequest& request) override;

private:
    /// True when the node at the request's path would take its value.
    [[nodiscard]] bool suits(const CMSetDataRequest& request) const;
    /// Stores the waiting writes and answers them.
    void commit();
    void refuse(const CMSetDataRequest& request, const CMError& error) const;

    SettingsFile m_file;
    CMValueNode* m_fault = nullptr;
    /// Writes that the disk does not have yet.
    QVector<CMSetDataRequest> m_waiting;
    /// Writes that the disk has and the nodes do not have yet.
    QQueue<CMSetDataRequest> m_stored;
};
