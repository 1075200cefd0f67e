// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaresult.h"

#include <string>
#include <vector>

namespace ctl {

/// The exit status of orvactl; scripts rely on the numbers.
enum class ExitStatus {
    Done = 0,       ///< what was asked for is done
    Other = 1,      ///< a fault that has no number of its own
    Usage = 2,      ///< the command line or a value in it cannot be understood
    TimedOut = 3,   ///< the time given with --wait or --timeout ran out
    Failed = 4,     ///< the host understood the request, and it failed or was refused
    Refused = 5,    ///< the bus policy or the host lets this user not do it
    NoSuchNode = 6, ///< the host has no node of that path
    NotRunning = 8, ///< the host or the bus is not there

    NotInRange = 10,   ///< no scan sees the network
    KeyRefused = 11,   ///< the network refused the key
    NoAddress = 12,    ///< the network was joined and gave no address
    CableFirst = 13,   ///< the cable has precedence
    AirplaneMode = 14, ///< airplane mode has the radio blocked
    NotJoined = 15,    ///< no attempt to join the network has ended in the time given
    Busy = 16,         ///< the host does the like for somebody else, or too much
    NoNetwork = 17,    ///< there is nothing to connect to: no cable and no known network

    RefusedByNetwork = 18, ///< the network was found and did not let the device join

    Interrupted = 128, ///< and the number of the signal: 130, 143
};

/// The meaning of a status, as help and manual page have it.
struct StatusRow
{
    int number;
    std::string reason; ///< the word before the text on stderr; empty for none
    std::string meaning;
};

/// All of them, in the order of their numbers.
const std::vector<StatusRow>& statusRows();

/// The words for why a step failed.
namespace Reason {
inline const auto unsupported = QStringLiteral("unsupported");
inline const auto wrongKind = QStringLiteral("wrong-kind");
} // namespace Reason

/// The failure of a step: the exit status, and a text for the person.
struct Failure
{
    ExitStatus status = ExitStatus::Other;
    QString text;
    QString reason = {}; ///< in a word that scripts may rely on; empty where the status says it

    [[nodiscard]] QString message() const { return text; }
};

/// A value, or the failure that says why there is none.
template <typename T>
using Outcome = OrvaResult<T, Failure>;

/// The end of a step without a value.
using Result = OrvaResult<void, Failure>;

} // namespace ctl
