#include <string>
#include <utility>

#include "Common/VQMSyncDemoMonitor.h"
#include "Diagnostics/Status/SettingStatus.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/Terminal.h"

namespace {

ExitCode Get()
{
    const status::SettingStatus setting = status::CollectSetting();
    const std::string counts = std::string("; it counts as ") + status::NameOfSetting(setting.enabled);
    if (IsStrange(setting)) {
        PrintError("note: " + setting.file + " holds '" + *setting.stored + "', expected 0 or 1" + counts);
    }
    if (!setting.problem.empty()) {
        PrintError("note: the setting is not read: " + setting.problem + counts);
    }
    static_cast<void>(Print(std::string(status::NameOfSetting(setting.enabled)) + "\n"));
    return ExitCode::kOk;
}

ExitCode Set(bool enable)
{
    CVQMSyncDemoMonitor::SetSyncDemoVocnf(enable);
    // The library's operation returns nothing, so the store is asked for its last error. Without one, a setting
    // that differs by now is not a failure: another process has changed it since.
    const std::string problem = status::StoreProblem();
    if (!problem.empty() && CVQMSyncDemoMonitor::CheckSyncDemoEnbaled() != enable) {
        throw CommandError(ExitCode::kCouldNotRun, std::string("cannot switch the setting ") +
                                                       status::NameOfSetting(enable) + "; it is stored in " +
                                                       status::SettingPlace() + " (" + problem + ")");
    }
    return ExitCode::kOk;
}

} // namespace

void AddSettingCommands(CommandLine& line, WatchSettingAction watch)
{
    CLI::App& group = line.AddGroup("setting", "Read, switch and watch the sync-demo setting");
    line.AddCommand(group, "get", "Print \"on\" or \"off\"", Get);
    line.AddCommand(group, "on", "Switch the sync demo on and check that it is stored", [] { return Set(true); });
    line.AddCommand(group, "off", "Switch the sync demo off and check that it is stored", [] { return Set(false); });
    line.AddCommand(group, "watch", "Print the state now and after each change, until Ctrl-C", std::move(watch));
}
