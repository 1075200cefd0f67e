// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Has the radio of the interface of that kernel index sleep between beacons, or not. A radio that
/// cannot choose stays as it is; a failure is logged.
void setPowerSave(int index, bool on);
