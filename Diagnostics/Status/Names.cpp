#include "Diagnostics/Status/ApplicationStatus.h"
#include "Diagnostics/Status/LaunchStatus.h"
#include "Diagnostics/Status/PopupStatus.h"

namespace status {

std::string NameOf(PopupStatus::State state)
{
    using State = PopupStatus::State;
    switch (state) {
    case State::kShown:
        return "not-held-back";
    case State::kHeldBack:
        return "held-back";
    case State::kLeftOver:
        return "left-held-back";
    case State::kForeign:
        return "held-back-by-others";
    case State::kUnknown:
        break;
    }
    return "unknown";
}

std::string NameOf(GrabState grab)
{
    switch (grab) {
    case GrabState::kHeld:
        return "held";
    case GrabState::kPartly:
        return "partly-held";
    case GrabState::kTaken:
        return "taken";
    case GrabState::kFree:
        return "not-held";
    case GrabState::kAbsent:
        break;
    }
    return "not-on-keyboard";
}

std::string NameOf(LaunchStatus::State state)
{
    using State = LaunchStatus::State;
    switch (state) {
    case State::kReady:
        return "ready";
    case State::kNoEntry:
        return "no-entry";
    case State::kBadEntry:
        return "unusable-entry";
    case State::kNoProgram:
        return "no-program";
    case State::kUnknown:
        break;
    }
    return "unknown";
}

} // namespace status
