// SPDX-License-Identifier: Apache-2.0
#include "action.h"

namespace ctl {

Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            std::chrono::seconds atMost)
{
    auto answer = context.host.invoke(path, value, atMost);
    if (answer)
        context.out.document(answer->__hash());
    return answer;
}

Result waitForInfo(Context& context, const InfoVerdict& verdict)
{
    if (context.bus.deadline().isForever())
        return {};
    const auto judge = [&verdict](const OrvaValue& value) { return verdict(value.networkInfo()); };
    return context.host.waitFor(OrvaNetworkInfoPath(), judge);
}

InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached)
{
    return [reached = std::move(reached)](const OrvaNetworkInfo& info) {
        return reached(info) ? std::optional<Result>(Result()) : std::nullopt;
    };
}

Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const InfoVerdict& verdict)
{
    const auto answer = activate(context, path, value);
    return answer ? waitForInfo(context, verdict) : answer.error();
}

} // namespace ctl
