#include <memory>
#include <utility>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"

void AddStatusCommand(CommandLine& line, StatusAction show)
{
    const auto options = std::make_shared<StatusOptions>();
    CLI::App& command = line.AddCommand("status", "Why does this TV launch or play nothing? All on one screen",
                                        [options, show = std::move(show)] { return show(*options); });
    command.add_option("--constants", options->constants, "The constants file; '-' is stdin")
        ->capture_default_str()
        ->type_name("FILE");
    command.add_flag("--json", options->json, "Print one JSON document");
}
