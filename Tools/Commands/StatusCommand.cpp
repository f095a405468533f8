#include <memory>
#include <utility>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Commands/PlaceOptions.h"

void AddStatusCommand(CommandLine& line, StatusAction show)
{
    const auto options = std::make_shared<StatusOptions>();
    CLI::App& command = line.AddCommand("status", "Why does this TV launch or play nothing? All on one screen",
                                        [options, show = std::move(show)] {
                                            RequirePlausible(options->places);
                                            return show(*options);
                                        });
    AddPlaceOptions(command, options->places);
    command.add_flag("--json", options->json, "Print one JSON document");
    command.add_flag("--quiet", options->quiet, "Print only the answer: the last line");
}
