// A program with a log and settings of its own.

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <dlog.h>
#include <vconf.h>

#include "Common/VQMSyncDemoMonitor.h"

namespace {

int stored = 0;
vconf_callback_fn watcher = nullptr;
void* watcherData = nullptr;

void OnChanged(keynode_t* /*node*/, void* data)
{
    ++*static_cast<int*>(data);
}

} // namespace

int dlog_print(log_priority /*prio*/, const char* tag, const char* fmt, ...)
{
    std::printf("%s: ", tag);
    va_list arguments;
    va_start(arguments, fmt);
    const int written = std::vprintf(fmt, arguments);
    va_end(arguments);
    std::putchar('\n');
    return written;
}

int vconf_get_int(const char* in_key, int* intval)
{
    if (std::strcmp(in_key, kSyncDemoSettingKey) != 0) {
        return -1;
    }
    *intval = stored;
    return 0;
}

int vconf_set_int(const char* /*in_key*/, int intval)
{
    stored = intval;
    if (watcher != nullptr) {
        watcher(nullptr, watcherData);
    }
    return 0;
}

int vconf_notify_key_changed(const char* /*in_key*/, vconf_callback_fn cb, void* user_data)
{
    watcher = cb;
    watcherData = user_data;
    return 0;
}

int vconf_ignore_key_changed(const char* /*in_key*/, vconf_callback_fn /*cb*/)
{
    watcher = nullptr;
    return 0;
}

int main()
{
    int changes = 0;
    void* const callback = reinterpret_cast<void*>(&OnChanged);
    CVQMSyncDemoMonitor::SetVconfCallBack(callback, &changes);
    CVQMSyncDemoMonitor::SetSyncDemoVocnf(true);
    CVQMSyncDemoMonitor::UnSetVconfCallBack(callback);
    std::printf("stored %d, changed %d times\n", stored, changes);
    return 0;
}
