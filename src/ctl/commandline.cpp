#include "commandline.h"

#include <algorithm>

namespace ctl {

namespace {

const char footer[] =
    R"(Values are JSON, as one key that names the type: {"bool":true}. A plain word or number is enough where
the node's present value tells the type; "-" reads the value from standard input.

What a command asks of the host is given up after 25 seconds (a scan after 35, a WPS session after 130)
where it is given no time; with one, all of it ends in that time.

Exit status: 0 done, 1 other fault, 2 usage, 3 timed out, 4 the request failed, 5 not allowed,
6 no such node, 8 the host or the bus is not running.

Colour is used on a terminal only, and not at all where NO_COLOR is set.)";

} // namespace

CommandLine::CommandLine()
    : m_app("Looks at and drives the network through the host's node tree.", "orvactl")
{
    m_app.fallthrough();
    m_app.footer(footer);
    m_app.get_formatter()->column_width(32);
    // What follows a name in --help: nothing where the name or the text says it all.
    for (const char* type : {"REQUIRED", "TEXT", "VALUE-NODE", "ACTION-NODE", "ROWS-NODE", "NODE"})
        m_app.get_formatter()->label(type, "");
    for (const char* type : {"INT", "UINT"})
        m_app.get_formatter()->label(type, "NUMBER");
    m_app.add_flag("--json", m_json, "One JSON document a line on standard output, nothing else");
    setChoices(*m_app.add_option("--generate", m_generate, "")->group(""), {"completion", "man"});
    m_app.require_subcommand(0, 1);
    addStatusCommand(*this);
    addMonitorCommand(*this);
    addNetworkCommands(*this);
    addProfileCommands(*this);
    addWifiCommands(*this);
    addSoftApCommands(*this);
    addRadioCommands(*this);
    addWatchdogCommands(*this);
    addGenericCommands(*this);
    addWatchCommands(*this);
    addWorldCommands(*this);
}

QDeadlineTimer CommandLine::deadline() const
{
    // A day is for ever here, and keeps the milliseconds inside an int.
    constexpr double day = 86400;
    return m_seconds ? QDeadlineTimer(qint64(std::min(*m_seconds, day) * 1000))
                     : QDeadlineTimer(QDeadlineTimer::Forever);
}

void CommandLine::addTime(CLI::App& command, const std::string& option,
                          const std::string& description)
{
    setSeconds(*command.add_option(option, m_seconds, description));
}

void CommandLine::makePatient(CLI::App& command)
{
    command.parse_complete_callback([this] { m_patient = true; });
}

CLI::App& CommandLine::group(CLI::App& parent, const std::string& name,
                             const std::string& description)
{
    CLI::App* group = parent.add_subcommand(name, description)->footer("");
    group->require_subcommand(1);
    return *group;
}

void setChoices(CLI::Option& option, const std::vector<std::string>& words)
{
    option.type_name("{" + CLI::detail::join(words, ",") + "}");
    option.check(CLI::IsMember(words).description(""));
}

void setSeconds(CLI::Option& option)
{
    option.type_name("SECONDS");
    option.check(CLI::PositiveNumber.description(""));
}

} // namespace ctl
