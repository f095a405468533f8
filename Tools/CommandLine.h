#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Tools/ExitCode.h"

/// A check for an option's value, which must be a whole number in this range. The check throws
/// `CommandError` and names the option.
std::function<std::string(const std::string&)> WholeNumber(const std::string& option, int least, int most);

/// The command line of vqmctl: a tree of commands, each file of commands adding its own branch.
///
/// A command's action runs once the whole line is understood; it reports by its exit code or by
/// throwing `CommandError`.
class CommandLine {
public:
    using Action = std::function<ExitCode()>;

    CommandLine();

    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Adds a word that only leads to further commands, such as "setting".
    CLI::App& AddGroup(const std::string& name, const std::string& description);

    /// Adds a command that does `action`. The result takes the command's options.
    CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& description, Action action);

    /// The same for a command that belongs to no group.
    CLI::App& AddCommand(const std::string& name, const std::string& description, Action action);

    /// Parses the arguments, runs the command and gives the exit code of the process.
    int Run(int argc, char** argv);

private:
    ExitCode Help(const std::vector<std::string>& words);
    ExitCode ParseAndAct(int argc, char** argv);

    CLI::App app_;
    Action action_;
    bool verbose_ = false;
};
