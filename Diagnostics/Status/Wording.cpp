#include "Diagnostics/Status/Wording.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/Words.h"

namespace status {

namespace {

constexpr std::size_t kLongestValue = 40;
constexpr std::size_t kFilesShown = 5;

std::string FilesText(const std::vector<const _VQMContentInfo*>& files)
{
    if (files.empty()) {
        return "no files";
    }
    std::string text;
    for (std::size_t index = 0; index < std::min(files.size(), kFilesShown); ++index) {
        text += (index == 0 ? "" : ", ") + files[index]->strName;
    }
    return files.size() > kFilesShown ? text + " and " + std::to_string(files.size() - kFilesShown) + " more" : text;
}

bool IsToolKey(const ApplicationStatus& application, const std::string& name)
{
    return std::any_of(application.toolKeys.begin(), application.toolKeys.end(),
                       [&](const ToolKey& key) { return key.name == name; });
}

/// What helps where this machine has the display and it refuses; empty for any other display.
std::string UnreachableHint(const std::string& display)
{
    const std::size_t end = display.find('.'); // the screen's number, which the socket's name lacks
    if (display.size() < 2 || display.front() != ':' || display.find('/') != std::string::npos) {
        return "";
    }
    std::error_code error;
    const bool there = std::filesystem::exists("/tmp/.X11-unix/X" + display.substr(1, end - 1), error);
    return there ? ", which is there; ask as the user who is logged in there, or set XAUTHORITY" : "";
}

} // namespace

std::string SettingText(const SettingStatus& setting)
{
    std::string state = NameOfSetting(setting.enabled);
    if (!setting.problem.empty()) {
        return state + "; " + setting.problem;
    }
    if (!setting.stored) {
        return state + "; nothing is stored in " + setting.file;
    }
    if (!IsStrange(setting)) {
        return state; // nothing to look into
    }
    std::string value = setting.stored->substr(0, kLongestValue);
    value += value.size() < setting.stored->size() ? "..." : "";
    return state + "; " + setting.file + " holds " + Quoted(value) + ", expected 0 or 1";
}

std::string ApplicationText(const Report& report)
{
    using State = ApplicationStatus::State;
    const ApplicationStatus& application = report.application;
    const std::string display = "display " + Quoted(application.display);
    switch (application.state) {
    case State::kNoDisplay:
        return "unknown: DISPLAY is not set" + (application.problem.empty() ? "" : "; " + application.problem);
    case State::kUnreachable:
        return "unknown: cannot open " + display + UnreachableHint(application.display);
    case State::kSilent:
        return "unknown: " + display + " does not answer";
    case State::kNotAsked:
        return "unknown: " + (application.display.empty() ? "" : "cannot ask " + display + ": ") + application.problem;
    case State::kUnseen:
        return report.applicationId + " runs as process " + std::to_string(application.pid) +
               "; which keys it holds is not known here" +
               (application.problem.empty() ? "" : ": " + application.problem);
    case State::kNotRunning:
        return report.applicationId + " does not run" + (application.display.empty() ? "" : " on " + display);
    case State::kRunning:
        break;
    }
    return report.applicationId + " runs on " + display + (application.displayFound ? ", its own," : "") +
           " as process " + std::to_string(application.pid) + " and holds " +
           Counted(application.heldKeys.size(), "key");
}

bool AreInOrder(const std::vector<ToolKey>& keys)
{
    return std::all_of(keys.begin(), keys.end(), [](const ToolKey& key) { return key.grab == GrabState::kHeld; });
}

std::string ToolKeyText(const ToolKey& key)
{
    switch (key.grab) {
    case GrabState::kHeld:
        return key.name + " is held";
    case GrabState::kPartly:
        return key.name + " is held, but another program has it in combination with some modifier";
    case GrabState::kTaken:
        return key.name + " is taken by another program";
    case GrabState::kFree:
        return key.name + " is on this keyboard, and the application does not hold it";
    case GrabState::kAbsent:
        break;
    }
    return key.name + " is not on this keyboard; 'vqmctl remote press " + key.name + "' presses it";
}

std::string LaunchText(const LaunchStatus& launch)
{
    return launch.state == LaunchStatus::State::kReady ? launch.program
           : launch.problem.empty()                    ? "unknown"
                                                       : launch.problem;
}

std::string OtherFailedKeys(const ApplicationStatus& application)
{
    std::string text;
    for (const std::string& name : application.failedKeys) {
        if (!IsToolKey(application, name)) {
            text += (text.empty() ? "" : ", ") + name;
        }
    }
    return text;
}

std::string PopupsText(const PopupStatus& popups)
{
    using State = PopupStatus::State;
    const std::string process = "process " + std::to_string(popups.pid);
    switch (popups.state) {
    case State::kUnknown:
        return "unknown: " + popups.why;
    case State::kShown:
        return "not held back" + (popups.why.empty() ? " by " + popups.service : ": " + popups.why);
    case State::kHeldBack:
        return "held back by " + popups.service + " for " + process;
    case State::kLeftOver:
        return "held back by " + popups.service + ", left over from " + process +
               ", which was killed; they are restored when the application next exits";
    case State::kForeign:
        break;
    }
    return "held back by " + popups.service + ", but not for the application";
}

std::string ConstantsText(const readiness::Constants& constants)
{
    if (constants.state == readiness::DocumentState::kNotNeeded) {
        return "not needed: the schedule is given";
    }
    const std::string* const name = constants.ScheduleFile();
    const bool loaded = constants.state == readiness::DocumentState::kLoaded;
    std::string text = constants.path + (loaded ? "" : " " + constants.problem);
    if (name != nullptr) {
        text += "; names " + Quoted(*name);
    } else if (loaded) {
        text += "; names no schedule";
    }
    return text;
}

std::string ScheduleText(const Report& report)
{
    const readiness::Schedule& schedule = report.content.schedule;
    if (schedule.state == readiness::DocumentState::kLoaded) {
        return schedule.path + "; expiration " + schedule::DescribeExpiration(schedule.policy, report.clock.now.day);
    }
    return schedule.path == schedule.directory ? "unknown: nothing names it" : schedule.path + " " + schedule.problem;
}

std::string ContentsText(const readiness::Contents& contents)
{
    return std::to_string(contents.complete) + " of " + Counted(contents.items.size(), "content") + " there";
}

std::string ClockText(const Report& report)
{
    const bool isSet = !report.zoneVariable.empty() && report.clock.unknownZone.empty();
    return schedule::DayText(report.clock.now.day) + " " + schedule::TimeText(report.clock.now.second) + " " +
           ZoneText(report.clock) + (isSet ? ", as TZ=" + report.zoneVariable + " says" : "");
}

std::string PeriodText(const schedule::ActivePeriod& period)
{
    const schedule::Span span = schedule::SpanOf(*period.period);
    return schedule::TimeText(span.start) + " to " + schedule::TimeText(span.end) + ": " + FilesText(period.files);
}

std::string ChangeText(const schedule::Change& change, const schedule::Programme& then)
{
    std::string text = (change.tomorrow ? "tomorrow " : "") + schedule::TimeText(change.second) + ": ";
    if (then.active.empty()) {
        return text + "nothing";
    }
    for (const schedule::ActivePeriod& period : then.active) {
        text += (&period == &then.active.front() ? "" : "; ") + FilesText(period.files);
    }
    return text;
}

} // namespace status
