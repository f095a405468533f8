#include "Diagnostics/Status/ApplicationStatus.h"

#include <chrono>
#include <cstdlib>
#include <system_error>

#include "Diagnostics/Status/TimeLimit.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Words.h"
#include "Platform/desktop/x11/KeyTable.h"

namespace status {

namespace {

/// A display answers within milliseconds; a loaded machine takes longer.
constexpr std::chrono::seconds kAnswerTimeout{3};

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

} // namespace

// The library of JSON finds these two by their names beside the type.

static void to_json(Json& json, const DisplayAnswer& answer)
{
    json = {{"connected", answer.connected},
            {"pid", answer.pid},
            {"held", answer.heldKeys},
            {"failed", answer.failedKeys},
            {"tool", answer.toolKeys}};
}

static void from_json(const Json& json, DisplayAnswer& answer)
{
    json.at("connected").get_to(answer.connected);
    json.at("pid").get_to(answer.pid);
    json.at("held").get_to(answer.heldKeys);
    json.at("failed").get_to(answer.failedKeys);
    json.at("tool").get_to(answer.toolKeys);
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

ApplicationStatus ApplicationFrom(const std::string& display, const std::optional<DisplayAnswer>& answer)
{
    using State = ApplicationStatus::State;
    ApplicationStatus application;
    application.display = display;
    if (!answer || !answer->connected) {
        application.state = answer ? State::kUnreachable : State::kSilent;
        return application;
    }
    application.state = answer->pid != 0 ? State::kRunning : State::kNotRunning;
    if (application.state == State::kNotRunning) {
        return application;
    }
    application.pid = answer->pid;
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
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        return {};
    }
    try {
        return ApplicationFrom(display, AskRecordWithin(kAnswerTimeout, AskDisplay));
    } catch (const std::system_error& error) {
        ApplicationStatus application;
        application.state = ApplicationStatus::State::kNotAsked;
        application.display = display;
        application.problem = error.code().message();
        return application;
    }
}

} // namespace status
