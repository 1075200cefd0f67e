// SPDX-License-Identifier: Apache-2.0
#include "families.h"
#include "outcome.h"

namespace ctl {

namespace {

const char footer[] =
    R"(Values are JSON, as one key that names the type: {"bool":true}. A plain word or number is enough where
the host knows the node's type, see "orvactl nodes"; "-" reads the value from standard input. What is one
of several, such as a state, is shown as its word, in JSON output as its number, and taken as either.

What a command asks of the host is given up after 25 seconds (a scan after 35, a WPS session after 130)
where it is given no time; with one, all of it ends in that time. Actions wait for their result: 90 seconds,
or what --wait gives; --wait 0 has them end once the host has answered.

Colour is used on a terminal only, and not at all where NO_COLOR is set.)";

std::string exitStatuses()
{
    std::string text = "Exit status, and the word that begins the text on standard error:\n";
    for (const StatusRow& row : statusRows()) {
        std::string line = "  " + std::to_string(row.number);
        line.resize(6, ' ');
        line += row.reason;
        line.resize(20, ' ');
        text += line + " " + row.meaning + "\n";
    }
    return text;
}

Commands allCommands()
{
    Commands all;
    for (const auto& family :
         {statusCommands, monitorCommands, networkCommands, profileCommands, wifiCommands,
          scanCommands, wpsCommands, wifiLinkCommands, softApCommands, radioCommands,
          watchdogCommands, genericCommands, watchCommands, worldCommands}) {
        const Commands commands = family();
        all.insert(all.end(), commands.begin(), commands.end());
    }
    return all;
}

} // namespace

Program program()
{
    using Kind = Parameter::Kind;
    return {"Looks at and drives the network through the host's node tree.",
            footer + ("\n\n" + exitStatuses()),
            {{"--version", "Print the version and exit", Kind::Version},
             {"--json", "One JSON document a line on standard output, nothing else", Kind::Flag},
             Parameter{"--generate", ""}.oneOf({"completion", "man"}).hidden()},
            allCommands()};
}

} // namespace ctl
