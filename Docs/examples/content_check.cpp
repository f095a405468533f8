// Can this TV play what is on its disk?

#include <iostream>

#include "Common/VQMConfig.h"
#include "Common/VQMSyncDemoMonitor.h"
#include "Data/VQMDataConstants.h"

int main()
{
    CVQMDataConstants::Initialize(VQM_CONSTANTS_FILE);
    CVQMSyncDemoMonitor* monitor = CVQMSyncDemoMonitor::GetInstance();
    const bool checked = monitor->Create();
    std::cout << "schedule: " << (monitor->CheckHaveSchedule() ? "yes" : "no") << '\n'
              << "contents: " << (monitor->CheckHaveContents() ? "yes" : "no") << '\n';
    const bool ready = checked && monitor->CheckHaveSchedule() && monitor->CheckHaveContents();
    CVQMSyncDemoMonitor::DestroyInstance();
    return ready ? 0 : 1;
}
