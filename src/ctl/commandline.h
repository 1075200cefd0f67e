#pragma once

#include "host.h"
#include "output.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

namespace ctl {

/// What a command works with.
struct Context
{
    const Bus& bus;
    Host& host;
    Output& out;
};

/// The options of a command that has none.
struct NoOptions
{
};

/// The description of every command, from which --help, the man page and the completion come, and
/// the choice that the command line made.
///
/// Names of option types that the completion understands: VALUE-NODE, ACTION-NODE, ROWS-NODE and
/// NODE for live node paths, FILE for file names.
class CommandLine
{
public:
    using Run = std::function<Result(Context&)>;

    CommandLine();

    [[nodiscard]] CLI::App& app() { return m_app; }
    [[nodiscard]] const Run& run() const { return m_run; }
    [[nodiscard]] bool json() const { return m_json; }
    /// The time that the person gave for all of it, where one was given.
    [[nodiscard]] QDeadlineTimer deadline() const;
    /// Whether the command waits for a bus and a host that are not there yet.
    [[nodiscard]] bool isPatient() const { return m_patient; }
    /// What to generate in place of running a command: "completion", "man" or nothing.
    [[nodiscard]] const std::string& generate() const { return m_generate; }

    /// A command and the options that its arguments are stored in.
    template <typename Options>
    struct Added
    {
        CLI::App* app;
        Options* options;
    };

    /// Adds the command @p name below @p parent; @p function runs when the command line names it.
    template <typename Options>
    Added<Options> add(CLI::App& parent, const std::string& name, const std::string& description,
                       Result (*function)(Context&, const Options&))
    {
        const auto options = std::make_shared<Options>();
        CLI::App* command = parent.add_subcommand(name, description)->footer("");
        command->callback([this, options, function] {
            m_run = [options, function](Context& context) { return function(context, *options); };
        });
        return {command, options.get()};
    }

    /// Adds an option that gives the time for all of a command, in seconds.
    void addTime(CLI::App& command, const std::string& option, const std::string& description);
    /// Lets a command wait for a bus and a host that are not there yet.
    void makePatient(CLI::App& command);

    /// Adds a group of commands below @p parent, one of which must be named.
    static CLI::App& group(CLI::App& parent, const std::string& name,
                           const std::string& description);

private:
    CLI::App m_app;
    Run m_run;
    std::optional<double> m_seconds;
    bool m_patient = false;
    bool m_json = false;
    std::string m_generate;
};

/// Lets @p option have one of @p words and no other value.
void setChoices(CLI::Option& option, const std::vector<std::string>& words);

/// Makes @p option a time in seconds, more than 0.
void setSeconds(CLI::Option& option);

/// An argument as the rest of the program has its texts.
inline QString text(const std::string& argument)
{
    return QString::fromStdString(argument);
}

// One family of commands each.
void addGenericCommands(CommandLine& commands);
void addWatchCommands(CommandLine& commands);
void addStatusCommand(CommandLine& commands);
void addMonitorCommand(CommandLine& commands);
void addNetworkCommands(CommandLine& commands);
void addProfileCommands(CommandLine& commands);
void addWifiCommands(CommandLine& commands);
void addScanCommands(CommandLine& commands, CLI::App& wifi);
void addWpsCommands(CommandLine& commands, CLI::App& wifi);
void addSoftApCommands(CommandLine& commands);
void addRadioCommands(CommandLine& commands);
void addWatchdogCommands(CommandLine& commands);
void addWorldCommands(CommandLine& commands);

} // namespace ctl
