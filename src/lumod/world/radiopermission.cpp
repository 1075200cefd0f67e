// SPDX-License-Identifier: Apache-2.0
#include "world/radiopermission.h"

RadioPermission radioPermission(NetworkMode mode, const Link& cable)
{
    switch (mode) {
    case NetworkMode::Wired:
        return RadioPermission::Leave;
    case NetworkMode::Wireless:
        return RadioPermission::Join;
    case NetworkMode::Auto:
        break;
    }
    if (cable.isUp())
        return RadioPermission::Leave;
    return cable.isConnecting() ? RadioPermission::Keep : RadioPermission::Join;
}
