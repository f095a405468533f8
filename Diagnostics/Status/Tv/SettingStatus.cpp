#include "Diagnostics/Status/SettingStatus.h"

#include <vconf.h>

#include "Common/VQMSyncDemoMonitor.h"

namespace status {

SettingStatus CollectSetting()
{
    SettingStatus setting;
    setting.enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    setting.file = SettingPlace();
    int stored = 0;
    if (vconf_get_int(kSyncDemoSettingKey, &stored) == 0) {
        setting.stored = std::to_string(stored);
    }
    return setting;
}

std::string SettingPlace()
{
    return std::string("the settings store as ") + kSyncDemoSettingKey;
}

std::string StoreProblem()
{
    return "the store did not take it";
}

} // namespace status
