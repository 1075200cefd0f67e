// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkenums.h"

#include <QStringList>

#include <memory>

class OrvaProcessRun;

/// The radios of the device, all of which or of Wi-Fi alone `rfkill` blocks and frees.
class RadioBlock
{
public:
    /// Reads which radios the device blocks, and begins to apply the mode that is stored: rfkill
    /// runs beside what the thread does until `apply`.
    RadioBlock();
    ~RadioBlock();

    /// Blocks or frees the radios; waits for rfkill, at most 5 s. The first call is for the mode
    /// that is stored.
    void apply(bool airplaneMode);

private:
    [[nodiscard]] QStringList arguments(bool airplaneMode) const;

    const OrvaAirplaneModeType m_airplaneModeType;
    std::unique_ptr<OrvaProcessRun> m_storedRun; ///< Until the first `apply`.
};
