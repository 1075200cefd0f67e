// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmrequest.h"

#include <QObject>

#include <functional>

class CMValueNode;
class Picture;
class RadioBlock;

/// Airplane mode: has the radios blocked by `rfkill`, and keeps the switch across restarts.
class AirplaneMode : public QObject
{
    Q_OBJECT
public:
    /// The picture and the radios must outlive this object.
    AirplaneMode(Picture& picture, RadioBlock& radios);

    /// Applies the mode that is stored, and from now on what `node` is switched to.
    void follow(CMValueNode* node);
    /// True for a request that moves the switch.
    [[nodiscard]] static bool isSwitch(const CMSetDataRequest& request);
    /// Stores the mode that the request asks for, then calls `move`. Where it cannot be stored
    /// nothing changes, and the request is answered with the error.
    void store(const CMSetDataRequest& request, const std::function<void()>& move);

public Q_SLOTS:
    /// Blocks or frees the radios; waits for rfkill, at most 5 s.
    void on_airplaneMode_changed(const OrvaValue& value);

private:
    Picture& m_picture;
    RadioBlock& m_radios;
};
