#include "Diagnostics/Status/LaunchStatus.h"

#include <optional>

#include "Diagnostics/Text/Words.h"
#include "Platform/desktop/app/DesktopEntry.h"
#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/app/FindProgram.h"
#include "Platform/desktop/environment/ApplicationId.h"

namespace status {

namespace {

using State = LaunchStatus::State;

void Examine(LaunchStatus& launch)
{
    const std::optional<desktop::EntryFile> file = desktop::FindEntryFile(launch.companion);
    if (!file) {
        launch.state = State::kNoEntry;
        launch.problem = "there is no " + Quoted(launch.companion + ".desktop") + " in " + desktop::EntryFolders();
        return;
    }
    launch.entry = file->path;
    const desktop::Result<desktop::DesktopEntry> entry = desktop::ReadEntry(*file);
    if (!entry) {
        launch.state = State::kBadEntry;
        launch.problem = Quoted(launch.entry) + " cannot be used: " + entry.Error().text;
        return;
    }
    if (entry->hidden) {
        launch.state = State::kNoEntry;
        launch.problem = Quoted(launch.entry) + " hides it";
        return;
    }
    launch.program = entry->arguments.front();
    const std::string tried = entry->tryProgram.empty() ? launch.program : entry->tryProgram;
    for (const std::string& name : {tried, launch.program}) {
        if (desktop::FindProgram(name).empty()) {
            launch.state = State::kNoProgram;
            launch.problem =
                Quoted(launch.entry) + " names the program " + Quoted(name) + ", which is missing or may not be run";
            return;
        }
    }
    launch.program = desktop::FindProgram(launch.program);
    launch.state = State::kReady;
}

} // namespace

LaunchStatus CollectLaunch()
{
    LaunchStatus launch;
    launch.companion = std::string(desktop::kApplicationId) + ".gui";
    Examine(launch);
    return launch;
}

} // namespace status
