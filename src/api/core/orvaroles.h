// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmpath.h"
#include "core/orvavalue.h"
#include "core/trstring.h"

/// The kind of thing that a row of a list stands for.
class ORVA_API OrvaRolesType
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,          ///< Nothing in particular.
        WirelessScan = 101 ///< A wireless network that a scan found.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaRolesType);
};

/// One row of a list-rows node.
class ORVA_API OrvaRoles : public OrvaHash
{
    ORVA_RECORD(OrvaRoles)

    /// Identifies the row in its node.
    ORVA_FIELD(QString, id, Id);
    /// The text that a person reads.
    ORVA_FIELD(TrString, title, Title);
    /// The kind of thing that the row stands for.
    ORVA_FIELD(OrvaRolesType, type, Type);
    /// The row's value.
    ORVA_FIELD(OrvaValue, value, Value);

    /// The role of a request that activates a node; `Value()` is that of one that writes it.
    static const QString& Activate()
    {
        static const QString key = orvaFieldKey("activate");
        return key;
    }
};

Q_DECLARE_METATYPE(OrvaRoles)
