#include "Tools/Commands/PlaceOptions.h"

#include "Common/VQMConfig.h"
#include "Diagnostics/Text/InputFile.h"
#include "Tools/CommandError.h"

void AddRootOption(CLI::App& command, readiness::Places& places)
{
    command.add_option("--root", places.root, "Look for the TV's files below this directory, such as a mounted disk")
        ->type_name("DIR");
}

void AddConstantsOption(CLI::App& command, readiness::Places& places)
{
    command.add_option("--constants", places.constants, "The constants file; '-' is stdin")
        ->default_str(VQM_CONSTANTS_FILE)
        ->type_name("FILE");
}

void AddPlaceOptions(CLI::App& command, readiness::Places& places)
{
    AddRootOption(command, places);
    AddConstantsOption(command, places);
    command.add_option("--schedule", places.schedule, "The schedule, instead of the one that the constants name")
        ->type_name("FILE");
    command.add_option("--media", places.media, "The directory of the media, instead of the TV's")->type_name("DIR");
}

void RequirePlausible(const readiness::Places& places)
{
    if (places.schedule == kStdin) {
        throw CommandError(ExitCode::kUsage, "--schedule is '-'; expected a file: the check reads it more than once, "
                                             "which stdin does not allow");
    }
    if (!places.schedule.empty() && !places.constants.empty()) {
        throw CommandError(ExitCode::kUsage, "--constants only names the schedule, and --schedule does already; "
                                             "expected one of the two");
    }
}
