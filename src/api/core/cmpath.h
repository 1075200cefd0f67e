// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvarecord.h"

#include <QMetaType>

/// Names one node of the host's tree: lower-case words with slashes, such as "network/info". A
/// value type.
class ORVA_API CMPath
{
public:
    CMPath() = default;
    /// The path as text; not checked.
    explicit CMPath(const QString& path)
        : m_path(path)
    {
    }

    /// True if it names no node at all.
    [[nodiscard]] bool isEmpty() const { return m_path.isEmpty(); }
    /// The path as text.
    [[nodiscard]] const QString& toString() const { return m_path; }

    /// Equal when the texts are.
    friend bool operator==(const CMPath& left, const CMPath& right)
    {
        return left.m_path == right.m_path;
    }
    /// The opposite of `==`.
    friend bool operator!=(const CMPath& left, const CMPath& right) { return !(left == right); }
    /// For hashes whose keys are paths.
    friend uint qHash(const CMPath& path, uint seed = 0) { return ::qHash(path.m_path, seed); }

private:
    QString m_path;
};

Q_DECLARE_METATYPE(CMPath)

/// Writes the path, control characters escaped.
ORVA_API std::ostream& operator<<(std::ostream& stream, const CMPath& path);

/// Paths stand inside records as text.
template <>
struct OrvaCodec<CMPath> : OrvaPlainCodec
{
    static std::optional<CMPath> decode(const QVariant& value)
    {
        const auto text = OrvaCodec<QString>::decode(value);
        return text ? std::optional(CMPath(*text)) : std::nullopt;
    }
    static QVariant encode(const CMPath& path) { return path.toString(); }
    static bool accepts(const QVariant& value) { return OrvaCodec<QString>::accepts(value); }
};
