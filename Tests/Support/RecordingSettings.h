#pragma once

#include <functional>
#include <map>
#include <string>

#include <vconf.h>

/// The recording platform's settings store: values that a test sets, results that it orders.
namespace recording {

struct Settings {
    std::map<std::string, int> integers;
    std::map<std::string, std::string> texts;
    int getResult = 0; ///< -1: reads fail and leave the output alone
    int setResult = 0; ///< what `vconf_set_int` returns; stored only on 0
    int notifyResult = 0;
    int ignoreResult = 0;
    /// Run by each read before it looks, as another process may change the store at any time.
    std::function<void()> onGet;
    /// The arguments of the last call.
    vconf_callback_fn notified = nullptr;
    void* notifiedData = nullptr;
    vconf_callback_fn ignored = nullptr;
};

/// The one store; `settings() = {}` starts afresh.
Settings& settings();

} // namespace recording
