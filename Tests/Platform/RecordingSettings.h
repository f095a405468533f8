#pragma once

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
};

/// The one store; `settings() = {}` starts afresh.
Settings& settings();

} // namespace recording
