#include "Diagnostics/Status/ApplicationStatus.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Diagnostics/Status/TimeLimit.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"
#include "Platform/desktop/x11/KeyTable.h"

namespace status {

namespace {

/// A display answers within milliseconds; a loaded machine takes longer.
constexpr std::chrono::seconds kAnswerTimeout{4};
constexpr std::size_t kMostDisplays = 8;

GrabState GrabStateOf(const std::string& key, const DisplayAnswer& answer)
{
    const bool failed = Contains(answer.failedKeys, key);
    if (Contains(answer.heldKeys, key)) {
        return failed ? GrabState::kPartly : GrabState::kHeld;
    }
    if (failed) {
        return GrabState::kTaken;
    }
    return Contains(answer.toolKeys, key) ? GrabState::kFree : GrabState::kAbsent;
}

/// The displays of this machine that a person may have meant: their sockets.
std::vector<std::string> LocalDisplays()
{
    std::vector<std::string> displays;
    std::error_code error;
    std::filesystem::directory_iterator entry("/tmp/.X11-unix", error);
    for (; !error && entry != std::filesystem::directory_iterator() && displays.size() < kMostDisplays;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.size() > 1 && name.front() == 'X') {
            displays.push_back(":" + name.substr(1));
        }
    }
    std::sort(displays.begin(), displays.end());
    return displays;
}

/// `displays`: of the application's processes, when they name more than one.
std::string WhatToSet(const std::vector<std::string>& displays)
{
    const std::vector<std::string> candidates = displays.empty() ? LocalDisplays() : displays;
    return "set DISPLAY" +
           (candidates.empty() ? std::string(" to the TV's display") : ", for example to " + JoinWithOr(candidates));
}

/// Takes over the variables of the process on this display: over ssh, neither is set.
void Adopt(const std::string& display, const std::vector<ApplicationProcess>& processes)
{
    setenv("DISPLAY", display.c_str(), 1);
    for (const ApplicationProcess& process : processes) {
        if (process.display == display && !process.authority.empty()) {
            setenv("XAUTHORITY", process.authority.c_str(), 0);
        }
    }
}

} // namespace

// The JSON library finds these two by name, in the namespace of the type.

static void to_json(Json& json, const DisplayAnswer& answer)
{
    json = {{"connected", answer.connected}, {"wayland", answer.wayland}, {"pid", answer.pid},
            {"answers", answer.answers},     {"held", answer.heldKeys},   {"failed", answer.failedKeys},
            {"tool", answer.toolKeys}};
}

static void from_json(const Json& json, DisplayAnswer& answer)
{
    json.at("connected").get_to(answer.connected);
    json.at("wayland").get_to(answer.wayland);
    json.at("pid").get_to(answer.pid);
    json.at("answers").get_to(answer.answers);
    json.at("held").get_to(answer.heldKeys);
    json.at("failed").get_to(answer.failedKeys);
    json.at("tool").get_to(answer.toolKeys);
}

ApplicationStatus ApplicationFrom(const std::string& display, const std::optional<DisplayAnswer>& answer,
                                  const ApplicationProcesses& running)
{
    using State = ApplicationStatus::State;
    ApplicationStatus application;
    application.display = display;
    if (!answer || !answer->connected) {
        application.state = answer ? State::kUnreachable : State::kSilent;
        return application;
    }
    application.wayland = answer->wayland;
    application.state = answer->pid != 0 ? State::kRunning : State::kNotRunning;
    if (application.state == State::kNotRunning) {
        return application;
    }
    application.pid = answer->pid;
    application.answers = answer->answers;
    for (const ApplicationProcess& process : running.processes) {
        if (process.pid == answer->pid) {
            application.stopped = process.stopped;
        } else if (process.display == display) {
            application.others.push_back(process.pid);
        }
    }
    application.heldKeys = answer->heldKeys;
    application.failedKeys = answer->failedKeys;
    for (int keyId = 0; keyId < desktop::kKeyIds; ++keyId) {
        if (desktop::IsToolKey(keyId)) {
            const std::string name = desktop::KeyName(keyId);
            application.toolKeys.push_back({name, GrabStateOf(name, *answer)});
        }
    }
    return application;
}

ApplicationStatus CollectApplication()
{
    const ApplicationProcesses running = FindApplicationProcesses();
    const char* variable = std::getenv("DISPLAY");
    std::string display = variable != nullptr ? variable : "";
    const bool found = display.empty();
    if (found) {
        const std::vector<std::string> displays = DisplaysOf(running.processes);
        if (displays.size() != 1) {
            return WithoutDisplay(running, WhatToSet(displays));
        }
        display = displays.front();
        Adopt(display, running.processes);
    }
    ApplicationStatus application;
    try {
        application = ApplicationFrom(display, AskRecordWithin(kAnswerTimeout, AskDisplay), running);
    } catch (const std::system_error& error) {
        application.state = ApplicationStatus::State::kNotAsked;
        application.display = display;
        application.problem = error.code().message();
    }
    application.displayFound = found;
    return application;
}

} // namespace status
