#include "Diagnostics/Status/PopupNote.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>

#include "Diagnostics/Status/TimeLimit.h"
#include "Diagnostics/Text/Json.h"
#include "Platform/desktop/bus/BusAddress.h"
#include "Platform/desktop/environment/ApplicationId.h"

namespace status {

namespace {

using State = PopupStatus::State;

/// More than the calls to the bus take together; each has its own limit.
constexpr std::chrono::seconds kAnswersTimeout{3};

PopupStatus Unknown(const std::string& why)
{
    PopupStatus popups;
    popups.why = why;
    return popups;
}

bool IsAbout(const desktop::PopupRecord& record, const PopupAnswer& answer)
{
    // Where the daemon ends it by itself, the record names no bus.
    return record.daemon == answer.daemon && (record.bus.empty() || record.bus == answer.busIdentity);
}

State StateOf(const std::optional<PopupNote>& note, const PopupAnswer& answer)
{
    const bool noted = note && IsAbout(note->record, answer);
    if (noted && note->record.inhibited) {
        return note->alive ? State::kHeldBack : State::kShown; // an inhibition ends with its process
    }
    if (!answer.paused.value_or(false)) {
        return State::kShown;
    }
    if (!noted) {
        return State::kForeign;
    }
    return note->alive ? State::kHeldBack : State::kLeftOver;
}

bool IsAlive(pid_t pid)
{
    return pid > 0 && (kill(pid, 0) == 0 || errno == EPERM);
}

std::optional<PopupNote> ReadNote()
{
    const std::string file = desktop::PopupRecordFile(desktop::kApplicationId);
    const std::optional<desktop::PopupRecord> record = desktop::ReadPopupRecord(file);
    return record ? std::optional(PopupNote{*record, IsAlive(record->pid)}) : std::nullopt;
}

} // namespace

// The JSON library finds these two by name, in the namespace of the type.

static void to_json(Json& json, const PopupAnswer& answer)
{
    json = {{"answers", answer.busAnswers},
            {"identity", answer.busIdentity},
            {"daemon", answer.daemon},
            {"daemon_answers", answer.daemonAnswers},
            {"product", Utf8(answer.product)}};
    if (answer.paused) {
        json["paused"] = *answer.paused;
    }
}

static void from_json(const Json& json, PopupAnswer& answer)
{
    json.at("answers").get_to(answer.busAnswers);
    json.at("identity").get_to(answer.busIdentity);
    json.at("daemon").get_to(answer.daemon);
    json.at("daemon_answers").get_to(answer.daemonAnswers);
    json.at("product").get_to(answer.product);
    if (json.contains("paused")) {
        answer.paused = json.at("paused").get<bool>();
    }
}

PopupStatus PopupsFrom(const std::optional<PopupNote>& note, const std::optional<PopupAnswer>& answer)
{
    if (!answer || !answer->busAnswers) {
        return Unknown("the session bus does not answer");
    }
    PopupStatus popups;
    if (answer->daemon.empty()) {
        popups.state = State::kShown;
        popups.why = "no notification daemon runs on the session bus";
        return popups;
    }
    popups.service = answer->product.empty() ? answer->daemon : answer->product;
    if (!answer->daemonAnswers) {
        popups.why = "the notification daemon " + popups.service + " does not answer";
        return popups;
    }
    popups.state = StateOf(note, *answer);
    if (popups.state == State::kHeldBack || popups.state == State::kLeftOver) {
        popups.pid = note->record.pid;
    }
    return popups;
}

PopupStatus CollectPopups()
{
    if (desktop::SessionBusAddress().empty()) {
        return Unknown("no session bus");
    }
    const std::optional<PopupNote> note = ReadNote();
    try {
        return PopupsFrom(note, AskRecordWithin(kAnswersTimeout, AskSessionBus));
    } catch (const std::system_error& error) {
        return Unknown("cannot ask the session bus: " + error.code().message());
    }
}

} // namespace status
