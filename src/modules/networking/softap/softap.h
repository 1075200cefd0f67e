// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmrequest.h"
#include "softap/softaptable.h"

#include <QMap>

/// The soft access point of one interface: its requests, its settings and its link.
///
/// The settings stand in it three times, because the three may differ: the requests go over the
/// configuration, and what they come to is kept from the backend while the interface is held.
struct SoftAp
{
    /// The settings in the device's configuration; empty for an interface that it does not name.
    OrvaNetworkProfileSoftApSettings configured;
    /// The settings that the live requests come to; empty while there is none.
    OrvaNetworkProfileSoftApSettings recorded;
    /// The settings that the backend was told last; empty while nothing runs.
    OrvaNetworkProfileSoftApSettings sent;
    /// The backend has said that nothing runs by them; to ask for the same tells it anew.
    bool failed = false;
    /// Some live request keeps changes from the backend.
    bool hold = false;
    /// The live requests.
    SoftApTable table;
    /// The requests that are answered when the interface is up, in the order in which they came.
    QVector<CMSetDataRequest> pending;
    OrvaNetworkState link;

    /// True where an access point runs, or was asked for.
    [[nodiscard]] bool isRunning() const { return !recorded.isEmpty(); }
    /// Nothing runs any more. Requests, their answers and the link stay.
    void setStopped()
    {
        recorded = {};
        sent = {};
        failed = false;
        hold = false;
    }
};

/// By the interface's name: the configured ones, and those whose link was told of.
using SoftApsByInterface = QMap<QString, SoftAp>;
