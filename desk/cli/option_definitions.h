// Defines the commands and options of `ventrix` for the library that parses them, with the texts of the help.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "desk/cli/options.h"

namespace ventrix::desk {

inline constexpr char kRequestText[] = "TEXT";  ///< The argument with the text of a request.

/// Adds all commands with their options. Parsing stores the values in `options`, and the command to describe
/// in `helpTopic`, which is empty for all. Both must outlive the app.
void AddCommands(CLI::App& app, Options& options, std::string& helpTopic);

}  // namespace ventrix::desk
