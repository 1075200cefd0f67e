#include "action.h"

namespace ctl {

void Wait::addTo(CLI::App& command, const std::string& description)
{
    setSeconds(*command.add_option("--wait", seconds, description));
}

QDeadlineTimer Wait::deadline() const
{
    return seconds ? secondsFromNow(*seconds) : QDeadlineTimer(QDeadlineTimer::Forever);
}

Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            const QDeadlineTimer& deadline)
{
    auto answer = context.host.invoke(path, value, deadline);
    if (answer)
        context.out.document(answer->__hash());
    return answer;
}

Result waitForInfo(Context& context, const Wait& wait, const QDeadlineTimer& deadline,
                   const InfoVerdict& verdict)
{
    if (!wait.seconds)
        return {};
    const auto judge = [&verdict](const OrvaValue& value) { return verdict(value.networkInfo()); };
    return context.host.waitFor(OrvaNetworkInfoPath(), judge, deadline);
}

InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached)
{
    return [reached = std::move(reached)](const OrvaNetworkInfo& info) {
        return reached(info) ? std::optional<Result>(Result()) : std::nullopt;
    };
}

Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const Wait& wait, const InfoVerdict& verdict)
{
    const QDeadlineTimer deadline = wait.deadline();
    const auto answer = activate(context, path, value, deadline);
    return answer ? waitForInfo(context, wait, deadline, verdict) : answer.failure();
}

} // namespace ctl
