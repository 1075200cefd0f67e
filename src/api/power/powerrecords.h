// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "power/powernodes.h"

#include <QObject>

/// Hardware that the power manager switches; of it, the network manager asks for the Wi-Fi radio.
class ORVA_API OrvaPowerManagerResources
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0, ///< Nothing.
        Wifi = 5  ///< The Wi-Fi radio.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaPowerManagerResources);
};

/// The wish of a module for a resource.
class ORVA_API OrvaPowerModuleActions
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0,    ///< Nothing.
        Request = 1, ///< The resource is needed.
        Release = 2  ///< The resource is no longer needed.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaPowerModuleActions);
};

/// A power state that the device can be asked to take.
class ORVA_API OrvaPowerManagerTargets
{
    Q_GADGET
public:
    enum Value : qint32 {
        None = 0, ///< No change.
        Wake = 1  ///< Awake.
    };
    Q_ENUM(Value)
    ORVA_ENUM(OrvaPowerManagerTargets);
};

/// A module makes itself known to the power manager.
class ORVA_API OrvaPowerManagerModuleRegister : public OrvaHash
{
    ORVA_RECORD(OrvaPowerManagerModuleRegister)
    /// The module's own name, 1 to 64 letters.
    ORVA_FIELD(QString, moduleName, ModuleName);
};

/// A module requests or releases a resource. May be repeated.
class ORVA_API OrvaPowerManagerResourceRequest : public OrvaHash
{
    ORVA_RECORD(OrvaPowerManagerResourceRequest)
    /// The module that asks, 1 to 64 letters.
    ORVA_FIELD(QString, moduleName, ModuleName);
    /// The resource that the module asks for.
    ORVA_FIELD(OrvaPowerManagerResources, resource, Resource);
    /// Its wish: it needs the resource from now on, or no longer.
    ORVA_FIELD(OrvaPowerModuleActions, action, Action);
};

/// Asks the device for a power state.
class ORVA_API OrvaPowerManagerTarget : public OrvaHash
{
    ORVA_RECORD(OrvaPowerManagerTarget)
    /// The state to take.
    ORVA_FIELD(OrvaPowerManagerTargets, target, Target);
};
