#include "Tools/CommandLine.h"

#include <charconv>
#include <cstdlib>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "Diagnostics/Text/Suggestions.h"
#include "Tools/CommandError.h"
#include "Tools/Terminal/HelpText.h"
#include "Tools/Terminal/Terminal.h"

namespace {

constexpr char kFooter[] = "Exit codes: 0 fine, 1 not ready or findings, 2 usage, 3 could not run.";

bool TakesCommands(const CLI::App& app)
{
    return !app.get_subcommands([](const CLI::App* command) { return !command->get_name().empty(); }).empty();
}

/// Null when there is none.
CLI::App* FindCommand(CLI::App& group, const std::string& name)
{
    const auto found = group.get_subcommands([&name](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

std::vector<std::string> CommandNames(const CLI::App& group)
{
    std::vector<std::string> names;
    for (const CLI::App* command : group.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// The command that the line had got to.
CLI::App& LastCommand(CLI::App& app)
{
    CLI::App* last = &app;
    while (!last->get_subcommands().empty()) {
        last = last->get_subcommands().front();
    }
    return *last;
}

/// How the user has to write the command: "vqmctl setting on".
std::string FullName(const CLI::App& command)
{
    const CLI::App* parent = command.get_parent();
    return parent == nullptr ? command.get_name() : FullName(*parent) + " " + command.get_name();
}

std::string DescribeMissingCommand(const CLI::App& group, const std::vector<std::string>& leftOver)
{
    const std::vector<std::string> names = CommandNames(group);
    if (leftOver.empty()) {
        return "a command is missing after '" + FullName(group) + "'; expected " + JoinWithOr(names);
    }
    std::string text = "unknown command '" + leftOver.front() + "' after '" + FullName(group) + "'; ";
    const std::vector<std::string> close = Suggest(leftOver.front(), names);
    return text + (close.empty() ? "expected " + JoinWithOr(names) : "did you mean " + JoinWithOr(close) + "?");
}

/// The command's options and those that hold everywhere.
std::vector<std::string> OptionNames(const CLI::App* command)
{
    std::vector<std::string> names;
    for (; command != nullptr; command = command->get_parent()) {
        for (const CLI::Option* option : command->get_options()) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
    }
    return names;
}

std::string DescribeUnknownOption(const CLI::App& command, const std::string& argument)
{
    const std::string name = argument.substr(0, argument.find('='));
    const std::vector<std::string> close = Suggest(name, OptionNames(&command));
    return "unknown option '" + name + "' of '" + FullName(command) + "'; " +
           (close.empty() ? "" : "did you mean " + JoinWithOr(close) + "? ") + "see '" + FullName(command) + " --help'";
}

bool IsOption(const std::string& argument)
{
    return argument.size() > 1 && argument.front() == '-';
}

/// The required argument that the line lacks, or nothing.
const CLI::Option* MissingArgument(const CLI::App& command)
{
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_required() && option->count() == 0) {
            return option;
        }
    }
    return nullptr;
}

/// The option of the command, or of a command above it, that the parser's error names.
const CLI::Option* NamedOption(const CLI::App* command, const CLI::ParseError& error)
{
    for (; command != nullptr; command = command->get_parent()) {
        for (const CLI::Option* option : command->get_options()) {
            if (std::string(error.what()).find(option->get_name()) != std::string::npos) {
                return option;
            }
        }
    }
    return nullptr;
}

/// Does not show the parser's own text, which differs from version to version.
std::string DescribeArgument(const CLI::App& command, const CLI::ParseError& error)
{
    if (const CLI::Option* const missing = MissingArgument(command)) {
        return missing->get_name() + " is missing";
    }
    if (const CLI::Option* const option = NamedOption(&command, error)) {
        return option->get_name() + (option->get_expected_min() == 0 ? " takes no value" : " wants a value");
    }
    return "the arguments cannot be understood";
}

std::string Describe(CLI::App& app, const CLI::ParseError& error)
{
    CLI::App& command = LastCommand(app);
    const std::vector<std::string> leftOver = app.remaining(true);
    if (!leftOver.empty() && IsOption(leftOver.front())) {
        return DescribeUnknownOption(command, leftOver.front());
    }
    if (TakesCommands(command)) {
        return DescribeMissingCommand(command, leftOver);
    }
    std::string text =
        leftOver.empty() ? DescribeArgument(command, error) : "unexpected argument '" + leftOver.front() + "'";
    return text + "; see '" + FullName(command) + " --help'";
}

void PrintHelp(const CLI::App& command)
{
    const std::string name = FullName(command);
    const std::string example = ExampleFor(name);
    const std::string help = command.get_formatter()->make_help(&command, name, CLI::AppFormatMode::Normal);
    static_cast<void>(
        Print(WrappedHelp(help + (example.empty() ? "" : "\nExample:\n  " + example + "\n"), HelpColumns())));
}

ColourMode ParseColour(const std::string& when)
{
    if (when == "auto") {
        return ColourMode::kAuto;
    }
    if (when == "always" || when == "never") {
        return when == "always" ? ColourMode::kAlways : ColourMode::kNever;
    }
    throw CommandError(ExitCode::kUsage, "--color is '" + when + "'; expected auto, always or never");
}

/// The library logs each call, which an application wants. A command shows its errors only, unless the user
/// asks for more, by the option or in DLOG_LEVEL. The log reads its threshold at its first line.
void SetLogThreshold(bool verbose)
{
    setenv("DLOG_LEVEL", verbose ? "debug" : "error", verbose ? 1 : 0);
}

} // namespace

CommandLine::CommandLine() : app_("The command-line tool of VQMKeygrab.", "vqmctl")
{
    app_.set_help_flag("-h,--help", "Print this help and exit");
    app_.set_version_flag("--version", "vqmctl " VQM_VERSION, "Print the version and exit");
    app_.add_flag("-v,--verbose", verbose_, "Show the library's log on stderr");
    app_.add_option("--color", "Colours: auto, always or never; auto colours what a terminal shows")
        ->type_name("WHEN")
        ->each([](const std::string& when) { SetColour(ParseColour(when)); });
    app_.footer(kFooter);
    app_.require_subcommand(1);
    app_.fallthrough(); // options that hold everywhere may also stand behind a command
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App& help = AddCommand("help", "Print the help of a command", [this, words] { return Help(*words); });
    help.add_option("command", *words, "The command's words, such as: schedule lint")->type_name("COMMAND");
}

CLI::App& CommandLine::AddGroup(const std::string& name, const std::string& description)
{
    CLI::App& group = *app_.add_subcommand(name, description);
    group.require_subcommand(1);
    return group;
}

CLI::App& CommandLine::AddCommand(CLI::App& group, const std::string& name, const std::string& description,
                                  Action action)
{
    CLI::App& command = *group.add_subcommand(name, description);
    command.require_subcommand(0);
    command.callback([this, action = std::move(action)] { action_ = action; });
    return command;
}

CLI::App& CommandLine::AddCommand(const std::string& name, const std::string& description, Action action)
{
    return AddCommand(app_, name, description, std::move(action));
}

std::function<std::string(const std::string&)> WholeNumber(const std::string& option, int least, int most)
{
    return [option, least, most](const std::string& text) -> std::string {
        int number = 0;
        const char* const end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        if (rest != end || error != std::errc() || number < least || number > most) {
            throw CommandError(ExitCode::kUsage, option + " is '" + text + "'; expected a whole number from " +
                                                     std::to_string(least) + " to " + std::to_string(most));
        }
        return ""; // the parser's sign for a valid value
    };
}

ExitCode CommandLine::Help(const std::vector<std::string>& words)
{
    CLI::App* command = &app_;
    for (const std::string& word : words) {
        CLI::App* const next = FindCommand(*command, word);
        if (next == nullptr) {
            throw CommandError(ExitCode::kUsage, TakesCommands(*command)
                                                     ? DescribeMissingCommand(*command, {word})
                                                     : "'" + FullName(*command) + "' has no command '" + word + "'");
        }
        command = next;
    }
    PrintHelp(*command);
    return ExitCode::kOk;
}

int CommandLine::Run(int argc, char** argv)
{
    try {
        return static_cast<int>(ParseAndAct(argc, argv));
    } catch (const CommandError& failure) {
        PrintError(failure.what());
        return static_cast<int>(failure.Code());
    } catch (const std::bad_alloc&) {
        PrintError("not enough memory");
        return static_cast<int>(ExitCode::kCouldNotRun);
    } catch (const std::exception& exception) {
        PrintError(exception.what());
        return static_cast<int>(ExitCode::kCouldNotRun);
    }
}

ExitCode CommandLine::ParseAndAct(int argc, char** argv)
{
    try {
        app_.parse(argc, argv);
    } catch (const CLI::CallForVersion& version) {
        static_cast<void>(Print(std::string(version.what()) + "\n"));
        return ExitCode::kOk;
    } catch (const CLI::CallForHelp&) {
        PrintHelp(LastCommand(app_));
        return ExitCode::kOk;
    } catch (const CLI::ParseError& error) {
        throw CommandError(ExitCode::kUsage, Describe(app_, error));
    }
    SetLogThreshold(verbose_);
    return action_();
}
