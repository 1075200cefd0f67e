// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"

namespace ctl {

namespace {

const char footer[] =
    R"(Values are JSON, as one key that names the type: {"bool":true}. A plain word or number is enough where
the host knows the node's type, see "orvactl nodes"; "-" reads the value from standard input. A state and
its like are shown as a word, with --json as a number; both are taken.

Actions wait for their result: 90 seconds, or what --wait gives; with --wait 0 they end once the host has
taken the request. All else ends when the host has answered, or after 25 seconds without an answer (a scan 35,
a WPS session 130). A time that is given holds for the whole command; typing a key does not count.)";

std::vector<Note> environment()
{
    return {
        {"DBUS_SYSTEM_BUS_ADDRESS", "The bus that the host is on, in place of the system's."},
        {"NO_COLOR", "Where it is set, nothing is in colour."},
        {"CLICOLOR_FORCE", "Where it is set and not 0, output is in colour also where it goes into "
                           "a file; NO_COLOR and --color come first."},
        {"TERM", "There is no colour on a terminal \"dumb\"."},
    };
}

std::vector<Note> examples()
{
    return {
        {"orvactl wifi connect Home", "Asks for the key where the network is new, waits until it "
                                      "is joined, and goes back where it is not."},
        {"orvactl wifi connect Home --key-file - <key", "The same in a script."},
        {"orvactl wifi wps pbc --apply", "Joins the network whose router's button is pressed."},
        {"orvactl profile set --ip 192.168.1.9 --netmask 255.255.255.0 --gateway 192.168.1.1",
         "Gives the wired interface a static address."},
        {"orvactl wait network/state/connected==true --timeout 30",
         "Waits for the network, for the host and the bus too."},
        {"orvactl --terse SSID,SIGNAL wifi scan", "Names and levels, for a script."},
        {"orvactl --json get network/info | jq .networkInfo.wired.addresses",
         "What a program reads: \"schema\" numbers the form of the document."},
        {"orvactl --json get network/profile | orvactl invoke network/profile/set -",
         "What was written is taken back."},
    };
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
            footer,
            {{"--version", "Print the version and exit", Kind::Version},
             {"--json", "One JSON document a line on standard output, nothing else", Kind::Flag},
             Parameter{"--terse",
                       "Only these columns of a table, commas between them, without "
                       "headings; \":\" between the values, \"\\\" before one in them",
                       Kind::Names}
                 .of("FIELDS"),
             {"--quiet", "No remarks on standard error, only what went wrong", Kind::Flag},
             Parameter{"--color", "Whether to write in colour"}.oneOf({"auto", "always", "never"}),
             Parameter{"--generate", ""}.oneOf({"man", "bash", "zsh", "fish"}).hidden()},
            allCommands(),
            environment(),
            examples()};
}

} // namespace ctl
