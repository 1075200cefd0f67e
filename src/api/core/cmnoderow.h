// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmpath.h"

#include <QObject>

/// The people that a node is meant for. It informs clients; the host's bus policy is what holds.
class ORVA_API OrvaPermission
{
    Q_GADGET
public:
    enum Value : qint32 {
        Default = 0,   ///< Everybody who may speak to the host.
        Service = 9999 ///< Meant for the device's own services.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaPermission);
};

/// One row of a table of nodes: the description of a node before it is there.
///
/// Such a table is a macro that takes the name of another and calls it with each row:
/// `ROW(Function, path, kind, type, permission, title, words)`. The columns are the function that
/// gives the path, the path, a `Kind`, the type as `CMNodeInfo::type` has it, an `OrvaPermission`,
/// the title, and in words what the node is.
struct ORVA_API CMNodeRow
{
    /// The use of a node.
    enum Kind {
        Value,    ///< A value node that clients may write.
        ReadOnly, ///< A value node that they only read.
        Action,   ///< An activate node.
        Rows      ///< A list node.
    };

    const char* path;                 ///< As text.
    Kind kind;                        ///< The use of the node.
    const char* type;                 ///< Empty where nothing is said.
    OrvaPermission::Value permission; ///< The people it is meant for.
    const char* title;                ///< The text that a person reads; often empty.

    /// The row of the node at `path`. A path without a row is our own mistake (fatal).
    template <std::size_t Size>
    [[nodiscard]] static const CMNodeRow& find(const CMNodeRow (&table)[Size], const CMPath& path)
    {
        return find(table, table + Size, path);
    }

private:
    [[nodiscard]] static const CMNodeRow& find(const CMNodeRow* begin, const CMNodeRow* end,
                                               const CMPath& path);
};

// clang-format off

/// Declares the path function of a row.
#define ORVA_NODE_PATH(Function, path, kind, type, permission, title, words)                       \
    [[nodiscard]] ORVA_API CMPath Function();

/// Defines the path function of a row.
#define ORVA_NODE_PATH_DEFINITION(Function, path, kind, type, permission, title, words)            \
    CMPath Function() { return CMPath(QStringLiteral(path)); }

/// A row as an element of an array; the words stay out of the program.
#define ORVA_NODE_ROW(Function, path, kind, type, permission, title, words)                        \
    CMNodeRow{path, CMNodeRow::kind, type, OrvaPermission::permission, title},

// clang-format on
