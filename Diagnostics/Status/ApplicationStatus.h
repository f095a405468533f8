#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Diagnostics/Status/DisplayAnswer.h"

namespace status {

/// What becomes of a tool key that is pressed.
enum class GrabState {
    kHeld,   ///< the application gets it
    kPartly, ///< it does, but for a combination with modifiers that another program has
    kTaken,  ///< another program gets it
    kFree,   ///< no program has taken it
    kAbsent, ///< the keyboard has no such key
};

/// "held" and so on, for programs.
std::string NameOf(GrabState grab);

struct ToolKey {
    std::string name;
    GrabState grab = GrabState::kAbsent;
};

/// The application on the display that DISPLAY names.
struct ApplicationStatus {
    enum class State {
        kNoDisplay,   ///< DISPLAY is not set
        kUnreachable, ///< there is no such display, or it refuses us
        kSilent,      ///< it does not answer
        kNotAsked,    ///< for lack of means; `problem` says of which
        kNotRunning,
        kRunning,
    };

    State state = State::kNoDisplay;
    std::string display; ///< what DISPLAY holds; not escaped
    std::string problem;
    pid_t pid = 0;
    std::vector<std::string> heldKeys;
    std::vector<std::string> failedKeys;
    std::vector<ToolKey> toolKeys; ///< all there are, while the application runs
};

/// `answer`: none came in time.
ApplicationStatus ApplicationFrom(const std::string& display, const std::optional<DisplayAnswer>& answer);

/// Waits a few seconds for a display at the most.
ApplicationStatus CollectApplication();

} // namespace status
