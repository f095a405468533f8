#include <vconf.h>

#include <array>
#include <charconv>
#include <cstring>
#include <new>

#include "Platform/desktop/base/SettingCallbacks.h"
#include "Platform/desktop/base/SettingsStore.h"
#include "Platform/desktop/base/SettingsWatch.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;

/// The interface knows no exceptions; running out of memory is one more failure.
template <typename Operation>
int Result(Operation operation)
{
    try {
        return operation() ? kDone : kFailed;
    } catch (const std::bad_alloc&) {
        return kFailed;
    }
}

} // namespace

int vconf_get_int(const char* in_key, int* intval)
{
    return Result([=] {
        const auto text = in_key != nullptr && intval != nullptr ? desktop::ReadSetting(in_key) : std::nullopt;
        const auto number = text ? desktop::ParseSettingNumber(*text) : std::nullopt;
        if (number) {
            *intval = *number;
        }
        return number.has_value();
    });
}

char* vconf_get_str(const char* in_key)
{
    char* result = nullptr;
    Result([in_key, &result] {
        const auto text = in_key != nullptr ? desktop::ReadSetting(in_key) : std::nullopt;
        // A zero byte would cut the text short: that is no text.
        if (text && text->find('\0') == std::string::npos) {
            result = strdup(text->c_str());
        }
        return result != nullptr;
    });
    return result;
}

int vconf_set_int(const char* in_key, int intval)
{
    std::array<char, 16> text;
    const char* end = std::to_chars(text.data(), text.data() + text.size(), intval).ptr;
    const std::string_view value(text.data(), static_cast<std::size_t>(end - text.data()));
    return Result([=] { return in_key != nullptr && desktop::WriteSetting(in_key, value); });
}

int vconf_set_str(const char* in_key, const char* strval)
{
    return Result([=] { return in_key != nullptr && strval != nullptr && desktop::WriteSetting(in_key, strval); });
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data)
{
    return Result([=] { return in_key != nullptr && desktop::AddSettingWatch(in_key, cb, user_data); });
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb)
{
    return Result([=] { return in_key != nullptr && desktop::RemoveSettingWatch(in_key, cb); });
}

char* vconf_keynode_get_name(keynode_t* keynode)
{
    return keynode != nullptr ? keynode->name.data() : nullptr;
}

int vconf_keynode_get_int(keynode_t* keynode)
{
    return keynode != nullptr ? keynode->number : 0;
}
