#include "Tests/Support/RecordingSettings.h"

#include <cstring>

#include "Tests/Support/Recorder.h"

namespace recording {

Settings& settings()
{
    static Settings instance;
    return instance;
}

} // namespace recording

using recorder::Record;
using recording::settings;

int vconf_get_int(const char* in_key, int* intval)
{
    Record(std::string("vconf_get_int ") + in_key);
    if (const std::function<void()> onGet = settings().onGet) {
        onGet();
    }
    const auto found = settings().integers.find(in_key);
    if (settings().getResult != 0 || found == settings().integers.end()) {
        return -1;
    }
    *intval = found->second;
    return 0;
}

char* vconf_get_str(const char* in_key)
{
    Record(std::string("vconf_get_str ") + in_key);
    const auto found = settings().texts.find(in_key);
    return found == settings().texts.end() ? nullptr : strdup(found->second.c_str());
}

int vconf_set_int(const char* in_key, int intval)
{
    Record(std::string("vconf_set_int ") + in_key + ' ' + std::to_string(intval));
    if (settings().setResult == 0) {
        settings().integers[in_key] = intval;
    }
    return settings().setResult;
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data)
{
    settings().notified = cb;
    settings().notifiedData = user_data;
    Record(std::string("vconf_notify_key_changed ") + in_key);
    return settings().notifyResult;
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb)
{
    settings().ignored = cb;
    Record(std::string("vconf_ignore_key_changed ") + in_key);
    return settings().ignoreResult;
}
