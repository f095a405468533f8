#include "Diagnostics/Status/Render.h"

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Status/Wording.h"
#include "Diagnostics/Text/TerminalText.h"

namespace status {

namespace {

constexpr std::size_t kLabelWidth = 13;
constexpr std::size_t kPeriodsShown = 5;

class Screen {
public:
    /// Without a label the line goes on with what the line above is about.
    void Add(const std::string& label, const std::string& text)
    {
        text_ += label + std::string(kLabelWidth - label.size(), ' ') + EscapedForTerminal(text) + '\n';
    }

    void AddPlain(const std::string& text) { text_ += EscapedForTerminal(text) + '\n'; }

    std::string Take() { return std::move(text_); }

private:
    std::string text_;
};

void AddApplication(const Report& report, Screen& screen)
{
    screen.Add("Application", ApplicationText(report) +
                                  (report.application.toolKeys.empty() || !AreInOrder(report.application.toolKeys)
                                       ? ""
                                       : ", the tool keys among them"));
    for (const ToolKey& key : report.application.toolKeys) {
        if (key.grab != GrabState::kHeld) {
            screen.Add("", ToolKeyText(key));
        }
    }
    const std::string others = OtherFailedKeys(report.application);
    if (!others.empty()) {
        screen.Add("", "taken by other programs, wholly or in part: " + others);
    }
}

void AddContent(const Report& report, Screen& screen)
{
    const readiness::Report& content = report.content;
    const bool loaded = content.schedule.state == readiness::DocumentState::kLoaded;
    screen.Add("Constants", ConstantsText(content.constants));
    screen.Add("Schedule", ScheduleText(report));
    screen.Add("Contents", loaded ? content.contents.directory + "; " + ContentsText(content.contents)
                                  : content.contents.directory + "; unknown without a schedule");
}

void AddProgramme(const Report& report, Screen& screen)
{
    if (report.content.schedule.state != readiness::DocumentState::kLoaded) {
        screen.Add("Now", "unknown without a schedule");
        return;
    }
    const schedule::Programme now = ProgrammeNow(report);
    for (std::size_t index = 0; index < now.active.size() && index < kPeriodsShown; ++index) {
        screen.Add(index == 0 ? "Now" : "", PeriodText(now.active[index]));
    }
    if (now.active.empty()) {
        screen.Add("Now", "nothing: " + Describe(*now.idleReason));
    } else if (now.active.size() > kPeriodsShown) {
        screen.Add("", std::to_string(now.active.size() - kPeriodsShown) + " more periods at the same time");
    }
    screen.Add("Next", now.next ? ChangeText(*now.next, ProgrammeAfter(report, *now.next)) : DescribeNext(now));
}

void AddList(const std::string& title, const std::vector<const std::vector<Diagnostic>*>& lists, Screen& screen)
{
    bool titled = false;
    for (const std::vector<Diagnostic>* list : lists) {
        for (const Diagnostic& diagnostic : *list) {
            if (!titled) {
                screen.AddPlain("");
                screen.AddPlain(title);
                titled = true;
            }
            screen.AddPlain("- " + diagnostic.message);
        }
    }
}

} // namespace

std::string Render(const Report& report, const Verdict& verdict, const Style& style)
{
    Screen screen;
    if (report.root.empty()) {
        screen.Add("Setting", SettingText(report.setting));
        AddApplication(report, screen);
        screen.Add("Companion", LaunchText(report.launch));
        screen.Add("Popups", PopupsText(report.popups));
    } else {
        screen.Add("Root", report.root + "; what runs on that TV is not known here");
    }
    AddContent(report, screen);
    screen.Add("Clock", ClockText(report));
    AddProgramme(report, screen);
    AddList("What stands in the way:", {&verdict.launch, &verdict.play}, screen);
    AddList("What is not as written:", {&verdict.meaning}, screen);
    AddList("Besides:", {&verdict.unknown, &verdict.remarks}, screen);
    screen.AddPlain("");
    const std::string sentence = EscapedForTerminal(Sentence(report, verdict));
    return screen.Take() + (verdict.HasErrors() ? style.Paint(Severity::kError, sentence) : style.Good(sentence)) +
           "\n";
}

} // namespace status
