// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "context.h"

#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace ctl {

/// Activates a node and waits for its answer, which is shown to a machine.
Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            std::chrono::seconds atMost = Bus::patience);

/// Judges the published network state: nothing means to wait on, a result is the end.
using InfoVerdict = std::function<std::optional<Result>(const OrvaNetworkInfo& info)>;

/// Waits for a state of the network, where the person gave a time.
Result waitForInfo(Context& context, const InfoVerdict& verdict);

/// A verdict that is done when `reached` says so.
InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached);

/// Activates a node, then waits for the state that `verdict` describes.
Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const InfoVerdict& verdict);

} // namespace ctl
