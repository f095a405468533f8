#include "Tools/Commands/TvSchedule.h"

#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/PlaceOptions.h"

namespace {

std::string WhyNotNamed(const readiness::Constants& constants)
{
    using State = readiness::DocumentState;
    const std::string file = "the constants file " + Quoted(constants.path) + " ";
    if (constants.state == State::kMissing || constants.state == State::kUnreadable) {
        return file + constants.problem;
    }
    return file +
           (constants.ScheduleFile() != nullptr ? "names it with an empty text" : "has no constant ScheduleFile");
}

} // namespace

void AddTvScheduleOptions(CLI::App& command, readiness::Places& places)
{
    AddRootOption(command, places);
    AddConstantsOption(command, places);
}

std::string GivenOrTvSchedule(const std::string& given, const readiness::Places& places)
{
    if (!given.empty()) {
        if (!places.root.empty() || !places.constants.empty()) {
            throw CommandError(ExitCode::kUsage, "--root and --constants say where the TV's own schedule is, but " +
                                                     Quoted(given) + " was named; expected one of the two");
        }
        return given;
    }
    const readiness::Constants constants = readiness::LoadConstants(places);
    const std::string* const name = constants.ScheduleFile();
    if (name == nullptr || name->empty()) {
        throw CommandError(ExitCode::kCouldNotRun,
                           "the TV's own schedule is not known: " + WhyNotNamed(constants) + "; name a document");
    }
    return FindSchedule(places, constants).place;
}
