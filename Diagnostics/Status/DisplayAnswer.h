#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace status {

/// What an X display says about the application.
struct DisplayAnswer {
    bool connected = false;
    bool wayland = false; ///< the display is only a guest in a Wayland session
    pid_t pid = 0;        ///< of the application; 0: it does not run there
    bool answers = true;  ///< the application does; unless it shows no window that could be asked
    std::vector<std::string> heldKeys;
    std::vector<std::string> failedKeys; ///< held by another program, wholly or in one combination
    std::vector<std::string> toolKeys;   ///< those of the tool keys that this keyboard has
};

/// Asks the display that DISPLAY names. May wait for ever.
DisplayAnswer AskDisplay();

} // namespace status
