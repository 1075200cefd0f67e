// SPDX-License-Identifier: Apache-2.0
#include "action.h"

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
    const QDeadlineTimer given = context.bus.deadline();
    const QDeadlineTimer deadline = given.isForever() ? QDeadlineTimer(resultPatience) : given;
    const QDeadlineTimer early(settling);
    if (!settled || deadline < early)
        return waitUntil(context, verdict, deadline);
    Result result = waitUntil(context, verdict, early);
    if (result.error().status != ExitStatus::TimedOut)
        return result;
    const auto either = [&](const OrvaNetworkInfo& info) {
        const auto first = verdict(info);
        return first ? first : settled(info);
    };
    return waitUntil(context, either, deadline);
}

InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached)
{
    return [reached = std::move(reached)](const OrvaNetworkInfo& info) {
        return reached(info) ? std::optional<Result>(Result()) : std::nullopt;
    };
}

Seen::Seen(Context& context, std::function<bool(const OrvaNetworkInfo& info)> state)
{
    QObject::connect(&context.host, &Host::valueChanged, &m_guard,
                     [this, state](const CMPath& path, const OrvaValue& value) {
                         m_seen = m_seen ||
                                  (path == OrvaNetworkInfoPath() && state(value.networkInfo()));
                     });
    const auto info = context.host.value(OrvaNetworkInfoPath());
    m_seen = m_seen || (info && state(info->networkInfo()));
}

Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const InfoVerdict& verdict, const InfoVerdict& settled)
{
    const auto answer = activate(context, path, value);
    return answer ? waitForInfo(context, verdict, settled) : answer.error();
}

Result activateAndReturn(Context& context, const CMPath& path,
                         const std::function<bool(const OrvaNetworkInfo& info)>& isUp,
                         const InfoVerdict& settled)
{
    const auto isDown = [isUp](const OrvaNetworkInfo& info) { return !isUp(info); };
    const Seen wasDown(context, isDown);
    const auto isBack = [&](const OrvaNetworkInfo& info) { return wasDown && isUp(info); };
    // One that is up and was not seen to go went too fast to be told.
    const auto later = [&](const OrvaNetworkInfo& info) {
        return isUp(info) ? std::optional(Result()) : settled ? settled(info) : std::nullopt;
    };
    return activateAndWait(context, path, {}, whenInfo(isBack), later);
}

std::optional<Result> noNetwork(const OrvaNetworkInfo& info)
{
    if (info.wired().cableConnected())
        return std::nullopt;
    if (info.airplaneMode())
        return Failure{
            ExitStatus::AirplaneMode,
            QStringLiteral("There is no cable, and airplane mode has the radio blocked.")};
    if (info.wirelessNetworks().isEmpty())
        return Failure{ExitStatus::NoNetwork,
                       QStringLiteral("There is no cable and no known wireless network.")};
    return std::nullopt;
}

} // namespace ctl
