#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace ctl {

/// The manual page orvactl(1), from the description of the commands.
std::string manPage(const CLI::App& app);

/// The bash completion, from the description of the commands; it asks the running host for node
/// paths.
std::string completion(const CLI::App& app);

} // namespace ctl
