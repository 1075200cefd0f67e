// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmrequest.h"

#include <QObject>

class Networking_LowLevel;

/// Requests about the wireless link as it stands: for its signal, and to associate it anew.
class WirelessLink : public QObject
{
    Q_OBJECT
public:
    /// `backend` must outlive this object.
    explicit WirelessLink(Networking_LowLevel& backend);

public Q_SLOTS:
    /// Answers with success, whatever the backend says.
    void on_forceWifiReconnect_req(const CMSetDataRequest& request);
    /// Answers with the signal in dBm, a double; with an error where there is none.
    void on_wirelessRssiNode_activated(const CMSetDataRequest& request);

private:
    Networking_LowLevel& m_lowlevel;
};
