// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

#include <QJsonObject>

/// The stored settings: one JSON object in `settings.json` of the state directory, a path for each
/// key.
///
/// A file that cannot be used, or an entry of it, is set aside under another name
/// (`settings.json.damaged-…`) and logged. Entries that nobody knows survive. What is put is
/// written by the next commit, all of it or nothing.
class SettingsFile
{
public:
    /// Makes the directory where it is missing, sweeps it and reads the file.
    explicit SettingsFile(const QString& directory);

    /// The stored value of a setting that has the type of `expected`; nothing where none is stored
    /// or what is stored does not suit, which is set aside.
    [[nodiscard]] std::optional<OrvaValue> take(const CMPath& path, const OrvaValue& expected);

    /// Puts a setting among those that the next commit writes. Fails when it could not be read
    /// back.
    [[nodiscard]] OrvaResult<void> put(const CMPath& path, const OrvaValue& value);

    /// Writes what was put since the last commit, where it differs from what is stored. Fails when
    /// the disk does not have it; what was stored before stays then, and what was put is forgotten.
    [[nodiscard]] OrvaResult<void> commit();

    /// Why nothing can be stored, as of the last try; empty while it can.
    [[nodiscard]] QString fault() const { return m_blocked ? m_blocked->message() : m_fault; }

    /// The paths of the stored settings.
    [[nodiscard]] QStringList paths() const { return m_entries.keys(); }

private:
    /// Makes the directory ready to be written.
    void prepare();
    void read();
    /// Moves the file away. Where that fails it is never written over: stores fail from then on.
    void setAside(const QString& reason);
    /// Takes an entry out that does not suit. The file as it was is kept.
    void drop(const CMPath& path, const QString& reason);
    [[nodiscard]] OrvaResult<void> write(const QJsonObject& entries);
    [[nodiscard]] QString filePath() const;
    [[nodiscard]] QString freeName() const;

    QString m_directory;
    QJsonObject m_entries;
    /// Entries put since the last commit.
    QJsonObject m_put;
    QString m_fault;
    bool m_copied = false;
    /// Why nothing is stored any more.
    std::optional<CMError> m_blocked;
};
