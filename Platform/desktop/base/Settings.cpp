#include "Platform/desktop/base/Settings.h"

#include <array>
#include <charconv>
#include <cstring>
#include <new>
#include <optional>
#include <vconf.h>

#include "Platform/desktop/base/Result.h"
#include "Platform/desktop/base/SettingCallbacks.h"
#include "Platform/desktop/base/SettingsStore.h"
#include "Platform/desktop/base/SettingsWatch.h"

namespace {

using desktop::Error;
using desktop::Result;

constexpr int kDone = 0;
constexpr int kFailed = -1;

std::string& LastError()
{
    thread_local std::string error;
    return error;
}

/// Runs an operation for the C interface, which knows neither results nor exceptions: the error is kept
/// for `LastSettingsError`, and running out of memory is one more failure.
template <typename Operation>
int Run(Operation operation)
{
    try {
        const Result<void> result = operation();
        LastError() = result ? "" : result.Error().text;
        return result ? kDone : kFailed;
    } catch (const std::bad_alloc&) {
        return kFailed;
    }
}

Error NullPointer()
{
    return {"a null pointer"};
}

/// Reads a setting and hands its text to `take`, which returns false for text of the wrong form.
template <typename Take>
int ReadAs(const char* form, const char* key, Take take)
{
    return Run([=]() -> Result<void> {
        if (key == nullptr) {
            return NullPointer();
        }
        const Result<std::string> text = desktop::ReadSetting(key);
        if (!text) {
            return text.Error();
        }
        if (!take(*text)) {
            return Error{std::string(key) + ": the value is not " + form};
        }
        return {};
    });
}

} // namespace

const std::string& desktop::LastSettingsError()
{
    return LastError();
}

int vconf_get_int(const char* in_key, int* intval)
{
    // A null result pointer is refused as a null key is.
    return ReadAs("a number", intval != nullptr ? in_key : nullptr, [intval](const std::string& text) {
        const std::optional<int> number = desktop::ParseSettingNumber(text);
        if (number) {
            *intval = *number;
        }
        return number.has_value();
    });
}

char* vconf_get_str(const char* in_key)
{
    char* result = nullptr;
    ReadAs("a text", in_key, [&result](const std::string& text) {
        // A zero byte would end the text early for the caller.
        if (text.find('\0') == std::string::npos) {
            result = strdup(text.c_str());
        }
        return result != nullptr;
    });
    return result;
}

int vconf_set_int(const char* in_key, int intval)
{
    std::array<char, 16> text;
    *std::to_chars(text.data(), text.data() + text.size() - 1, intval).ptr = '\0';
    return vconf_set_str(in_key, text.data());
}

int vconf_set_str(const char* in_key, const char* strval)
{
    return Run([=]() -> Result<void> {
        return in_key != nullptr && strval != nullptr ? desktop::WriteSetting(in_key, strval) : NullPointer();
    });
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data)
{
    return Run([=]() -> Result<void> {
        return in_key != nullptr && cb != nullptr ? desktop::AddSettingWatch(in_key, cb, user_data) : NullPointer();
    });
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb)
{
    return Run([=]() -> Result<void> {
        if (in_key == nullptr || !desktop::RemoveSettingWatch(in_key, cb)) {
            return Error{"no such callback is registered"};
        }
        return {};
    });
}

char* vconf_keynode_get_name(keynode_t* keynode)
{
    return keynode != nullptr ? keynode->name.data() : nullptr;
}

int vconf_keynode_get_int(keynode_t* keynode)
{
    return keynode != nullptr ? keynode->number : 0;
}
