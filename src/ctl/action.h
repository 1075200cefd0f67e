#pragma once

#include "commandline.h"

#include "network/networkpaths.h"
#include "network/networkrecords.h"

namespace ctl {

/// The --wait option of an action.
struct Wait
{
    std::optional<double> seconds;

    /// For an action that asks for a state: @p description says which.
    void addTo(CLI::App& command, const std::string& description);
    /// When the time given is over; never, where none was given.
    [[nodiscard]] QDeadlineTimer deadline() const;
};

/// A value of one type, in the plain form of it.
inline OrvaValue valueOf(const QString& type, const QVariant& content)
{
    return OrvaValue(QVariantHash{{type, content}});
}

/// Activates a node and waits for its answer, which is shown to a machine.
Outcome<OrvaValue> activate(Context& context, const CMPath& path, const OrvaValue& value,
                            const QDeadlineTimer& deadline = QDeadlineTimer::Forever);

/// Judges the published network state: nothing means wait on, a result is what to end with.
using InfoVerdict = std::function<std::optional<Result>(const OrvaNetworkInfo& info)>;

/// Waits for a state of the network; not at all where --wait was not given.
Result waitForInfo(Context& context, const Wait& wait, const QDeadlineTimer& deadline,
                   const InfoVerdict& verdict);

/// A verdict that is done when @p reached says so.
InfoVerdict whenInfo(std::function<bool(const OrvaNetworkInfo& info)> reached);

/// Activates a node, then waits for the state that @p verdict describes, both within --wait.
Result activateAndWait(Context& context, const CMPath& path, const OrvaValue& value,
                       const Wait& wait, const InfoVerdict& verdict);

} // namespace ctl
