#include "Tools/Watch/WatchSetting.h"

#include <memory>
#include <string>

#include <vconf.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Diagnostics/Status/SettingStatus.h"
#include "Tools/CommandError.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/MainLoop.h"

namespace {

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
    std::unique_ptr<CommandError> failure_; ///< thrown once the loop has ended: a callback of the store must not throw
};

ExitCode Watch::Run()
{
    // Registered before the first read, so that no change falls between the two.
    void* const callback = reinterpret_cast<void*>(&Watch::OnChanged);
    if (!CVQMSyncDemoMonitor::SetVconfCallBack(callback, this)) {
        throw CommandError(ExitCode::kCouldNotRun, "cannot watch the setting; it is stored in " +
                                                       status::SettingPlace() + " (" + status::StoreProblem() + ")");
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
        if (!Print(std::string(status::NameOfSetting(enabled)) + "\n")) {
            loop_.End();
        }
    } catch (const CommandError& failure) {
        failure_ = std::make_unique<CommandError>(failure);
        loop_.End();
    }
}

} // namespace

ExitCode WatchSetting()
{
    return Watch().Run();
}
