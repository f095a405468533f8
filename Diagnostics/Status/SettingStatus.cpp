#include "Diagnostics/Status/SettingStatus.h"

#include <cerrno>
#include <sys/stat.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Platform/desktop/base/Settings.h"
#include "Platform/desktop/base/SettingsStore.h"

namespace status {

namespace {

bool IsAbsent(const std::string& path)
{
    struct stat there {};
    return lstat(path.c_str(), &there) == -1 && errno == ENOENT;
}

} // namespace

SettingStatus CollectSetting()
{
    SettingStatus setting;
    setting.enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    const desktop::Result<std::string> file = desktop::SettingsFile(kSyncDemoSettingKey);
    const desktop::Result<std::string> stored = desktop::ReadSetting(kSyncDemoSettingKey);
    setting.file = file.ValueOr("");
    if (stored) {
        setting.stored = *stored;
    } else if (!file || !IsAbsent(*file)) {
        setting.problem = stored.Error().text;
    }
    return setting;
}

std::string SettingPlace()
{
    return desktop::SettingsFile(kSyncDemoSettingKey).ValueOr("no file");
}

std::string StoreProblem()
{
    return desktop::LastSettingsError();
}

} // namespace status
