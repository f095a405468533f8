#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Diagnostics/Status/DisplayAnswer.h"
#include "Diagnostics/Status/Processes.h"

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

/// The application on the display that DISPLAY names, or that its own process does.
struct ApplicationStatus {
    enum class State {
        kNoDisplay,   ///< DISPLAY is not set, and no process of the application names one
        kUnreachable, ///< there is no such display, or it refuses us
        kSilent,      ///< it does not answer
        kNotAsked,    ///< for lack of means; `problem` says of which
        kNotRunning,
        kUnseen, ///< its process is there; no display says which keys it holds
        kRunning,
    };

    State state = State::kNoDisplay;
    std::string display;       ///< which one was asked; not escaped
    bool displayFound = false; ///< it is the process's own: DISPLAY is not set here
    std::string problem;       ///< why it is not known, and what helps
    bool wayland = false;      ///< the display is a guest in a Wayland session
    pid_t pid = 0;
    bool answers = true;
    bool stopped = false;      ///< by a signal
    std::vector<pid_t> others; ///< further processes of the application on this display
    std::vector<std::string> heldKeys;
    std::vector<std::string> failedKeys;
    std::vector<ToolKey> toolKeys; ///< all there are, while the application runs
};

/// `answer`: none came in time.
ApplicationStatus ApplicationFrom(const std::string& display, const std::optional<DisplayAnswer>& answer,
                                  const ApplicationProcesses& running = {});

/// What the processes alone say: of several, the first and those on its display. `advice`: what helps to know
/// more; may be empty.
ApplicationStatus WithoutDisplay(const ApplicationProcesses& running, const std::string& advice);

/// Waits a few seconds for a display at the most.
ApplicationStatus CollectApplication();

} // namespace status
