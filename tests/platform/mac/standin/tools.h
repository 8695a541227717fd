// The tools that macOS has and this system has not: what is run instead.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace standin {

/// A program with its arguments.
using CommandLine = std::vector<std::string>;

/// From now on a program that is asked for by that path is replaced by what `instead` gives.
void replaceTool(const std::string& path, std::function<CommandLine(const CommandLine&)> instead);

/// What is run for a command; itself when nothing replaces it.
[[nodiscard]] CommandLine toolFor(CommandLine command);

}  // namespace standin
