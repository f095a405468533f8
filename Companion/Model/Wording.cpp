#include "Companion/Model/Wording.h"

#include <algorithm>
#include <initializer_list>

#include "Companion/Model/Language.h"
#include "Diagnostics/Text/Words.h"

namespace companion {

namespace {

/// A translated text with values in place of its %s, one after the other.
std::string Filled(const std::string& format, std::initializer_list<std::string> values)
{
    std::string text;
    std::size_t from = 0;
    for (const std::string& value : values) {
        const std::size_t place = std::min(format.find("%s", from), format.size());
        text += format.substr(from, place - from) + value;
        from = std::min(place + 2, format.size());
    }
    return text + format.substr(from);
}

/// The diagnostics begin in small letters, for they stand behind a colon elsewhere.
std::string AsSentence(std::string text)
{
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

std::string IdleText(schedule::IdleReason reason)
{
    switch (reason) {
    case schedule::IdleReason::kNoPeriods:
    case schedule::IdleReason::kNeverPlays:
        return Translated("Nothing, at no time");
    case schedule::IdleReason::kBetweenPeriods:
        return Translated("Nothing");
    case schedule::IdleReason::kNoFiles:
        return Translated("A period without files");
    }
    return "";
}

} // namespace

std::string Headline(const Screen& screen)
{
    if (!screen.obstacle.empty()) {
        return AsSentence(screen.obstacle);
    }
    return screen.outcome == readiness::Outcome::kPerhapsNotMeant ? Translated("Ready, but the schedule looks odd")
                                                                  : Translated("Ready to play");
}

std::string SummaryText(const Screen& screen)
{
    return AsSentence(screen.summary);
}

std::string ProgrammeText(const Programme& programme)
{
    if (programme.idle) {
        return IdleText(*programme.idle);
    }
    std::string text;
    for (const std::string& file : programme.files) {
        text += (text.empty() ? "" : Translated(", ")) + file;
    }
    const std::size_t more = programme.fileCount - programme.files.size();
    return more == 0 ? text
                     : Filled(Translated("%s and %s more", "%s and %s more", more), {text, std::to_string(more)});
}

std::string UntilText(const Screen& screen)
{
    if (!screen.haveSchedule) {
        return "";
    }
    return screen.next ? Filled(Translated("until %s"), {TimeOfDay(screen.next->second)}) : Translated("all day");
}

std::string WhenText(const Screen& screen)
{
    if (!screen.next) {
        return "";
    }
    return Filled(screen.next->tomorrow ? Translated("at %s tomorrow") : Translated("at %s"),
                  {TimeOfDay(screen.next->second)});
}

std::string CompleteText(const Screen& screen)
{
    return Filled(Translated("%s of %s complete"),
                  {std::to_string(screen.completeFiles), std::to_string(screen.fileCount)});
}

std::string MoreFilesText(const Screen& screen)
{
    const std::size_t more = screen.fileCount - screen.files.size();
    return Filled(Translated("and %s more", "and %s more", more), {std::to_string(more)});
}

std::string DetailText(const FileLine& file)
{
    if (file.reason.empty()) {
        return Filled(Translated("%s, complete"), {BytesText(file.size)});
    }
    const std::string name = Quoted(file.name) + " ";
    return file.reason.rfind(name, 0) == 0 ? file.reason.substr(name.size()) : file.reason;
}

std::string SpanText(const schedule::Span& span)
{
    return TimeOfDay(span.start) + "–" + TimeOfDay(span.end);
}

std::vector<std::pair<std::string, std::string>> GroupLines(const Screen& screen)
{
    const Group& group = screen.group;
    const auto orDash = [&screen](const std::string& value) {
        return screen.haveSchedule && !value.empty() ? value : std::string("–");
    };
    return {
        {Translated("Role"), orDash(group.isMaster ? Translated("Master") : Translated("Player"))},
        {Translated("Group"), orDash(group.wirelessGroup)},
        {Translated("Players"), orDash(std::to_string(group.players))},
        {Translated("Master"), orDash(group.masterAddress)},
        {Translated("Address"), orDash(group.address)},
        {Translated("Netmask"), orDash(group.subnetMask)},
        {Translated("Gateway"), orDash(group.gateway)},
    };
}

std::string SettingText(bool enabled)
{
    return enabled ? Translated("Plays in step with the others.") : Translated("Plays on its own.");
}

} // namespace companion
