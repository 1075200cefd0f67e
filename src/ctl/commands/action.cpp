// SPDX-License-Identifier: Apache-2.0
#include "commands/action.h"

#include <utility>

namespace ctl {

namespace {

/// The time that a passing state may last.
constexpr std::chrono::seconds settling{5};

Result waitUntil(Context& context, const InfoVerdict& verdict, const QDeadlineTimer& deadline)
{
    const auto judge = [&verdict](const OrvaValue& value) { return verdict(value.networkInfo()); };
    const Result result = context.host.waitFor(OrvaNetworkInfoPath(), judge, deadline);
    if (result.error().status != ExitStatus::TimedOut)
        return result;
    return Failure{
        ExitStatus::TimedOut,
        QStringLiteral("It was asked for and has not come about in the time given; the device goes "
                       "on trying.")};
}

/// What the daemon has told before it answers something is in the picture; of an action the host
/// may not have heard the least by then.
void hearDaemon(Context& context)
{
    static_cast<void>(context.host.invoke(OrvaNetworkWirelessRssiPath(), {}));
}

} // namespace

Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            std::chrono::seconds atMost)
{
    auto answer = context.host.invoke(path, value, atMost);
    if (answer)
        context.out.document(answer->__hash());
    return answer;
}

Result waitForInfo(Context& context, const InfoVerdict& verdict, const InfoVerdict& settled)
{
    if (!context.waits)
        return {};
    hearDaemon(context);
    const QDeadlineTimer given = context.bus.deadline();
    const QDeadlineTimer deadline = given.isForever() ? QDeadlineTimer(resultPatience) : given;
    const QDeadlineTimer early(settling);
    std::optional<OrvaNetworkInfo> last;
    const auto judge = [&](const OrvaNetworkInfo& info) {
        last = info;
        const auto first = verdict(info);
        return first || !settled || !early.hasExpired() ? first : settled(info);
    };
    Result result = waitUntil(context, judge, settled && early < deadline ? early : deadline);
    if (result.error().status == ExitStatus::TimedOut && settled && early < deadline)
        result = waitUntil(context, judge, deadline);
    if (result.error().status != ExitStatus::TimedOut || !settled || !last)
        return result;
    return settled(*last).value_or(result);
}

InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached)
{
    return [reached = std::move(reached)](const OrvaNetworkInfo& info) {
        return reached(info) ? std::optional<Result>(Result()) : std::nullopt;
    };
}

bool isConnected(const OrvaNetworkInfo& info)
{
    return info.state() == OrvaNetworkState::Connected;
}

Departure::Departure(Context& context, const std::function<bool(const OrvaNetworkInfo& info)>& isUp)
{
    QObject::connect(&context.host, &Host::valueChanged, &m_guard,
                     [this, isUp](const CMPath& path, const OrvaValue& value) {
                         if (path != OrvaNetworkInfoPath())
                             return;
                         const bool wasUp = std::exchange(m_wasUp, isUp(value.networkInfo()));
                         m_seen = m_seen || (wasUp && !m_wasUp);
                     });
    // The network that was about to come up may still do so; down by then is down for good.
    hearDaemon(context);
    const auto info = context.host.value(OrvaNetworkInfoPath());
    m_seen = m_seen || (info && !isUp(info->networkInfo()));
}

Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const InfoVerdict& verdict, const InfoVerdict& settled)
{
    const auto answer = context.host.invoke(path, value);
    const Result waited = answer ? waitForInfo(context, verdict, settled) : answer.error();
    if (waited)
        context.out.document(answer->__hash());
    return waited;
}

Result activateAndReturn(Context& context, const CMPath& path,
                         const std::function<bool(const OrvaNetworkInfo& info)>& isUp,
                         const InfoVerdict& settled)
{
    const auto answer = context.host.invoke(path, {});
    if (!answer)
        return answer.error();
    std::optional<Departure> wasLeft;
    if (context.waits)
        wasLeft.emplace(context, isUp);
    const auto isBack = [&](const OrvaNetworkInfo& info) { return *wasLeft && isUp(info); };
    // One that is up and was not seen to go went too fast to be told.
    const auto later = [&](const OrvaNetworkInfo& info) {
        return isUp(info) ? std::optional(Result()) : settled ? settled(info) : std::nullopt;
    };
    const Result waited = waitForInfo(context, whenInfo(isBack), later);
    if (waited)
        context.out.document(answer->__hash());
    return waited;
}

} // namespace ctl
