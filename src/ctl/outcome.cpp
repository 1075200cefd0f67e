// SPDX-License-Identifier: Apache-2.0
#include "outcome.h"

namespace ctl {

const std::vector<StatusRow>& statusRows()
{
    static const std::vector<StatusRow> rows = {
        {0, "", "what was asked for is done"},
        {1, "", "another fault; also where standard output was lost"},
        {2, "", "the command line, or a value in it, cannot be understood"},
        {3, "", "the time ran out"},
        {4, "", "the host refused the request, or it failed"},
        {5, "", "this user is not allowed to"},
        {6, "", "the host has no such node"},
        {8, "", "the host or the bus is not running"},
        {10, "not-in-range", "no scan sees the network"},
        {11, "key-refused", "the network refused the key"},
        {13, "cable-first", "the cable has precedence"},
        {14, "airplane-mode", "airplane mode has the radio blocked"},
        {15, "not-joined", "the network is in range and was not joined, or gave no address"},
        {16, "busy", "the host does the like for somebody else, or too much"},
        {17, "no-network", "there is no cable and no known network"},
        {130, "", "ended by Ctrl-C (SIGINT)"},
        {143, "", "ended by SIGTERM"},
    };
    return rows;
}

} // namespace ctl
