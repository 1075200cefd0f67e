// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "context.h"

#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace ctl {

/// The host gives a scan 30 seconds.
constexpr std::chrono::seconds scanPatience{35};

/// The wait for the result of an action where the person gave no time.
constexpr std::chrono::seconds resultPatience{90};

/// Activates a node and waits for its answer, which is shown to a machine.
Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            std::chrono::seconds atMost = Bus::patience);

/// Judges the published network state: nothing means to wait on, a result is the end.
using InfoVerdict = std::function<std::optional<Result>(const OrvaNetworkInfo& info)>;

/// Waits for a state of the network; not at all with --wait 0. `settled` judges too, some seconds
/// later or at the end of a shorter time: what is true for a moment only, such as that there is no
/// cable, is none of its concern.
Result waitForInfo(Context& context, const InfoVerdict& verdict, const InfoVerdict& settled = {});

/// A verdict that is done when `reached` says so.
InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached);

/// True if there is a network, by cable or Wi-Fi.
bool isConnected(const OrvaNetworkInfo& info);

/// Notices that the network was left, once the host has answered the request to leave it.
class Departure
{
public:
    Departure(Context& context, const std::function<bool(const OrvaNetworkInfo& info)>& isUp);
    explicit operator bool() const { return m_seen; }

private:
    QObject m_guard;
    bool m_wasUp = false;
    bool m_seen = false;
};

/// Activates a node, waits for the state that `verdict` describes, and shows the answer to a
/// machine.
Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const InfoVerdict& verdict, const InfoVerdict& settled = {});

/// Activates a node that has the network go and come back, and waits for both.
Result activateAndReturn(Context& context, const CMPath& path,
                         const std::function<bool(const OrvaNetworkInfo& info)>& isUp,
                         const InfoVerdict& settled = {});

} // namespace ctl
