// SPDX-License-Identifier: Apache-2.0
#include "output/outcome.h"

namespace ctl {

const std::vector<StatusRow>& statusRows()
{
    static const std::vector<StatusRow> rows = {
        {0, "", "what was asked for is done"},
        {1, "", "another fault; also where standard output was lost"},
        {2, "", "the command line, or a value in it, cannot be understood"},
        {3, "timed-out", "the time ran out"},
        {4, "failed",
         "the host refused the request, or it failed; the word is wrong-kind where another command "
         "is for the node"},
        {5, "not-allowed", "this user is not allowed to"},
        {6, "no-such-node", "the host has no such node"},
        {8, "not-running", "the host or the bus is not running"},
        {10, "not-in-range", "no scan sees the network"},
        {11, "key-refused", "the network refused the key"},
        {12, "no-address", "the network was joined and gave no address"},
        {13, "cable-first", "the cable has precedence"},
        {14, "airplane-mode", "airplane mode has the radio blocked"},
        {15, "not-joined", "no attempt to join the network ended in the time given"},
        {16, "busy", "the host does the like for somebody else, or too much"},
        {17, "no-network", "there is no cable and no known network"},
        {18, "refused", "the network refused the device, for another reason than its key"},
        {129, "", "ended by SIGHUP"},
        {130, "", "ended by Ctrl-C (SIGINT)"},
        {141, "", "who read standard output has gone (SIGPIPE)"},
        {143, "", "ended by SIGTERM"},
    };
    return rows;
}

} // namespace ctl
