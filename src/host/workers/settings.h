#pragma once

#include "../settingsfile.h"

/// A setting's path and the value that it has until one is stored, which fixes its type.
struct SettingDefault
{
    CMPath path;
    OrvaValue value;
};

/// The settings: a value node for each, whose writes are on the disk before they are answered.
///
/// A write that cannot be stored is refused and changes nothing; one that changes nothing is
/// answered without touching the disk. Profiles are secret nodes: they hold keys.
class Settings : public CMNodesWorker
{
    Q_OBJECT
public:
    /// Values are kept in a file of `directory`.
    Settings(const QVector<SettingDefault>& defaults, const QString& directory);

    void setDataRequest(const CMSetDataRequest& request) override;

private:
    /// Whether the node at the request's path would take its value and be changed by it.
    [[nodiscard]] bool changes(const CMSetDataRequest& request) const;

    SettingsFile m_file;
};
