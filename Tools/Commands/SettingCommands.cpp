#include <memory>
#include <string>

#include <sys/stat.h>
#include <vconf.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Platform/desktop/base/Settings.h"
#include "Platform/desktop/base/SettingsStore.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/MainLoop.h"

namespace {

const char* StateName(bool enabled)
{
    return enabled ? "on" : "off";
}

bool PrintState(bool enabled)
{
    return Print(std::string(StateName(enabled)) + "\n");
}

std::string StorePath()
{
    return desktop::SettingsFile(kSyncDemoSettingKey).ValueOr("no file");
}

ExitCode Get()
{
    const bool enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    const desktop::Result<std::string> stored = desktop::ReadSetting(kSyncDemoSettingKey);
    if (stored && *stored != "0" && *stored != "1") {
        PrintError("note: " + StorePath() + " holds '" + *stored + "', expected 0 or 1; it counts as " +
                   StateName(enabled));
    }
    struct stat status = {};
    if (!stored && lstat(StorePath().c_str(), &status) == 0) {
        PrintError("note: the setting is not read: " + stored.Error().text + "; it counts as " + StateName(enabled));
    }
    static_cast<void>(PrintState(enabled));
    return ExitCode::kOk;
}

ExitCode Set(bool enable)
{
    CVQMSyncDemoMonitor::SetSyncDemoVocnf(enable);
    // Storing reports nothing to its caller: only the store knows. A setting that is another one
    // by now is no failure: somebody else has stored it since.
    // A copy, as the read below replaces it.
    const std::string problem = desktop::LastSettingsError(); // NOLINT(performance-unnecessary-copy-initialization)
    if (!problem.empty() && CVQMSyncDemoMonitor::CheckSyncDemoEnbaled() != enable) {
        throw CommandError(ExitCode::kCouldNotRun, std::string("cannot switch the setting ") + StateName(enable) +
                                                       "; it is stored in " + StorePath() + " (" + problem + ")");
    }
    return ExitCode::kOk;
}

/// Prints the setting's state when it differs from the one printed last.
class Watch {
public:
    ExitCode Run();

private:
    static void OnChanged(keynode_t* node, void* data);
    void Report(bool enabled);

    MainLoop loop_;
    bool known_ = false;
    bool enabled_ = false;
    std::unique_ptr<CommandError> failure_; ///< kept over the loop, whose C code no exception may cross
};

ExitCode Watch::Run()
{
    // Registered before the first read, so that no change falls between the two.
    void* const callback = reinterpret_cast<void*>(&Watch::OnChanged);
    if (!CVQMSyncDemoMonitor::SetVconfCallBack(callback, this)) {
        throw CommandError(ExitCode::kCouldNotRun, "cannot watch the setting; it is stored in " + StorePath() + " (" +
                                                       desktop::LastSettingsError() + ")");
    }
    loop_.EndWithReader();
    Report(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
    loop_.Run();
    CVQMSyncDemoMonitor::UnSetVconfCallBack(callback);
    if (failure_) {
        throw *failure_;
    }
    return ExitCode::kOk;
}

void Watch::OnChanged(keynode_t* /*node*/, void* data)
{
    static_cast<Watch*>(data)->Report(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
}

void Watch::Report(bool enabled)
{
    if (known_ && enabled == enabled_) {
        return;
    }
    known_ = true;
    enabled_ = enabled;
    try {
        if (!PrintState(enabled)) {
            loop_.End();
        }
    } catch (const CommandError& failure) {
        failure_ = std::make_unique<CommandError>(failure);
        loop_.End();
    }
}

} // namespace

void AddSettingCommands(CommandLine& line)
{
    CLI::App& group = line.AddGroup("setting", "Read, switch and watch the sync-demo setting");
    line.AddCommand(group, "get", "Print \"on\" or \"off\"", Get);
    line.AddCommand(group, "on", "Switch the sync demo on and check that it is stored", [] { return Set(true); });
    line.AddCommand(group, "off", "Switch the sync demo off and check that it is stored", [] { return Set(false); });
    line.AddCommand(group, "watch", "Print the state now and after each change, until Ctrl-C",
                    [] { return Watch().Run(); });
}
