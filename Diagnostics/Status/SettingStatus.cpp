#include "Diagnostics/Status/SettingStatus.h"

#include <cerrno>
#include <sys/stat.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Platform/desktop/base/SettingsStore.h"

namespace status {

namespace {

bool IsAbsent(const std::string& path)
{
    struct stat there {};
    return lstat(path.c_str(), &there) == -1 && errno == ENOENT;
}

} // namespace

bool IsStrange(const SettingStatus& setting)
{
    return setting.stored && *setting.stored != "0" && *setting.stored != "1";
}

SettingStatus CollectSetting()
{
    SettingStatus setting;
    setting.enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    const std::optional<std::string> file = desktop::SettingsFile(kSyncDemoSettingKey);
    setting.stored = desktop::ReadSetting(kSyncDemoSettingKey);
    setting.file = file.value_or("");
    if (!setting.stored && !(file && IsAbsent(*file))) {
        setting.problem = desktop::LastSettingsProblem();
    }
    return setting;
}

} // namespace status
