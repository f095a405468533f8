#include <functional>
#include <ostream>

#include <gmock/gmock.h>

#include "Diagnostics/Status/PopupNote.h"
#include "Diagnostics/Status/Render.h"
#include "Diagnostics/Text/Json.h"

namespace {

using namespace status;
using readiness::DocumentState;
using testing::HasSubstr;

constexpr char kMenu[] = "XF86SimpleMenu";
constexpr char kMore[] = "XF86More";

DisplayAnswer GoodAnswer()
{
    DisplayAnswer answer;
    answer.connected = true;
    answer.pid = 12;
    answer.heldKeys = {kMenu, kMore, "XF86AudioPlay"};
    answer.toolKeys = {kMenu, kMore};
    return answer;
}

_VQMTime Hour(int hour)
{
    _VQMTime time;
    time.nHour = hour;
    return time;
}

_VQMSchdule Period(int start, int end, const std::string& file)
{
    _VQMSchdule period{Hour(start), Hour(end), {}};
    if (!file.empty()) {
        period.listContents.push_back({"A1", file, 5, "mp4", 1});
    }
    return period;
}

readiness::ContentFile File(const std::string& name, uVQMINT64 size)
{
    readiness::ContentFile file;
    file.name = name;
    file.size = size;
    file.kind = readiness::FileKind::kFile;
    file.readable = true;
    return file;
}

readiness::Report GoodContent()
{
    readiness::Report content;
    content.constants.path = "/c.xml";
    content.constants.state = DocumentState::kLoaded;
    content.constants.values["ScheduleFile"] = "s.xml";
    content.verdict.ran = content.verdict.haveSchedule = content.verdict.haveContents = true;
    content.schedule.directory = "/rech/";
    content.schedule.path = "/rech/s.xml";
    content.schedule.state = DocumentState::kLoaded;
    content.schedule.policy.bError = false;
    content.schedule.policy.stExpiration.nYear = 2030;
    content.schedule.policy.stExpiration.nMonth = 12;
    content.schedule.policy.stExpiration.nDay = 31;
    content.schedule.policy.listSchedule = {Period(9, 18, "day.mp4"), Period(18, 22, "evening.mp4")};
    content.contents.directory = "/media/";
    content.contents.directoryPresent = true;
    content.contents.files = {File("day.mp4", 5), File("evening.mp4", 5)};
    content.contents.items = {{0, 0, 5}, {1, 1, 5}};
    content.contents.complete = 2;
    return content;
}

/// A TV that lacks nothing, at half past nine.
Report GoodReport()
{
    Report report;
    report.applicationId = "org.example";
    report.setting = {true, "/store", "1", ""};
    report.application = ApplicationFrom(":0", GoodAnswer());
    report.launch = {LaunchStatus::State::kReady, "org.example.gui", "/e.desktop", "/bin/gui", ""};
    report.popups = {PopupStatus::State::kHeldBack, "dunst", 12, ""};
    report.content = GoodContent();
    report.clock = {{{2026, 11, 21}, 34200}, "CET", 3600};
    return report;
}

struct Case {
    std::string name;
    std::function<void(Report&)> change;
    std::vector<std::string> ids;
    std::string text; ///< part of the last reason
};

void PrintTo(const Case& one, std::ostream* stream)
{
    *stream << one.name;
}

class StatusVerdict : public testing::TestWithParam<Case> {};

TEST_P(StatusVerdict, NamesWhatStandsInTheWay)
{
    Report report = GoodReport();
    GetParam().change(report);
    std::vector<std::string> ids;
    std::string last;
    const Verdict verdict = Judge(report);
    for (const std::vector<Diagnostic>* reasons : {&verdict.launch, &verdict.play}) {
        for (const Diagnostic& reason : *reasons) {
            ids.push_back(reason.id);
            last = reason.message;
        }
    }
    EXPECT_EQ(ids, GetParam().ids);
    EXPECT_THAT(last, HasSubstr(GetParam().text));
}

void LoseContents(Report& report, std::size_t files)
{
    for (std::size_t file = 0; file < files; ++file) {
        report.content.contents.files[file].size = 3;
    }
    report.content.contents.complete -= files;
    report.content.verdict.haveContents = false;
}

void LoseSchedule(Report& report)
{
    report.content.verdict.haveSchedule = report.content.verdict.haveContents = false;
    report.content.schedule.state = DocumentState::kMissing;
    report.content.schedule.problem = "is missing";
    report.content.contents.items.clear();
    report.content.contents.files.clear();
}

ApplicationStatus WithFailed(const std::vector<std::string>& held, const std::vector<std::string>& failed)
{
    DisplayAnswer answer = GoodAnswer();
    answer.heldKeys = held;
    answer.failedKeys = failed;
    return ApplicationFrom(":0", answer);
}

const Case kCases[] = {
    {"Nothing", [](Report&) {}, {}, ""},
    {"SettingOff", [](Report& report) { report.setting.enabled = false; }, {"setting-off"}, "'vqmctl setting on'"},
    {"SettingUnreadable",
     [](Report& report) {
         report.setting = {false, "/store", {}, "/store: Permission denied"};
     },
     {"setting-unreadable"},
     "the setting counts as off: /store: Permission denied"},
    {"SettingOddButOn", [](Report& report) { report.setting.stored = " 1"; }, {}, ""},
    {"NoDisplay", [](Report& report) { report.application = {}; }, {}, ""},
    {"DisplaySilent", [](Report& report) { report.application = ApplicationFrom(":0", std::nullopt); }, {}, ""},
    {"Stopped",
     [](Report& report) {
         DisplayAnswer answer = GoodAnswer();
         answer.answers = false;
         report.application = ApplicationFrom(":0", answer, {true, {{12, 0, true, ":0", ""}}});
     },
     {"application-stopped"},
     "'kill -CONT 12' lets it go on"},
    {"Hung",
     [](Report& report) {
         DisplayAnswer answer = GoodAnswer();
         answer.answers = false;
         report.application = ApplicationFrom(":0", answer, {true, {{12, 0, false, ":0", ""}}});
     },
     {"application-hung"},
     "process 12, does not answer"},
    {"Wayland", [](Report& report) { report.application.wayland = true; }, {"wayland"}, "log in to an X11 session"},
    {"NoEntry",
     [](Report& report) {
         report.launch = {LaunchStatus::State::kNoEntry, "org.example.gui", "", "", "there is none"};
     },
     {"companion-missing"},
     "the companion cannot be launched: there is none"},
    {"UnusableEntry",
     [](Report& report) {
         report.launch = {LaunchStatus::State::kBadEntry, "org.example.gui", "/e", "", "no Exec"};
     },
     {"companion-entry-unusable"},
     "no Exec"},
    {"NoProgram",
     [](Report& report) {
         report.launch = {LaunchStatus::State::kNoProgram, "org.example.gui", "/e", "p", "'p' is missing"};
     },
     {"companion-program-missing"},
     "'p' is missing"},
    {"NotRunning",
     [](Report& report) {
         DisplayAnswer answer = GoodAnswer();
         answer.pid = 0;
         report.application = ApplicationFrom(":0", answer);
     },
     {"application-not-running"},
     "org.example does not run on display ':0'"},
    {"KeyTaken",
     [](Report& report) { report.application = WithFailed({kMenu}, {kMore}); },
     {"tool-key-taken"},
     "XF86More is taken by another program"},
    {"KeysNotHeld",
     [](Report& report) { report.application = WithFailed({}, {}); },
     {"tool-key-not-held", "tool-key-not-held"},
     "XF86More is on this keyboard, and the application does not hold it"},
    {"KeyPartlyHeld",
     [](Report& report) {
         report.application = WithFailed({kMenu, kMore}, {kMore});
     },
     {},
     ""},
    {"OtherKeyTaken",
     [](Report& report) {
         report.application = WithFailed({kMenu, kMore}, {"XF86AudioPlay"});
     },
     {},
     ""},
    {"PopupsShown",
     [](Report& report) {
         report.popups = {PopupStatus::State::kShown, "dunst", 0, ""};
     },
     {},
     ""},
    {"OneFile",
     [](Report& report) { LoseContents(report, 1); },
     {"file-size"},
     "'day.mp4' has 3 bytes; the schedule announces 5"},
    {"TwoFiles",
     [](Report& report) { LoseContents(report, 2); },
     {"file-size"},
     "the schedule announces 5 (and 1 more: 'vqmctl check' names them)"},
    {"NoSchedule", LoseSchedule, {"schedule-missing"}, "the schedule '/rech/s.xml' is missing"},
    {"Expired",
     [](Report& report) {
         report.content.schedule.policy.stExpiration.nYear = 2020;
         report.content.schedule.expiry = schedule::Expiry::kExpired;
     },
     {},
     ""},
    {"LastDay",
     [](Report& report) {
         report.clock.now.day = {2030, 12, 31};
     },
     {},
     ""},
    {"Night",
     [](Report& report) { report.clock.now.second = 22 * 3600; },
     {"nothing-scheduled"},
     "nothing is scheduled now: "},
    {"LastSecond", [](Report& report) { report.clock.now.second = 22 * 3600 - 1; }, {}, ""},
    {"Everything",
     [](Report& report) {
         report.setting.enabled = false;
         report.application = {};
         LoseSchedule(report);
     },
     {"setting-off", "schedule-missing"},
     ""},
};

INSTANTIATE_TEST_SUITE_P(Cases, StatusVerdict, testing::ValuesIn(kCases),
                         [](const auto& one) { return one.param.name; });

PopupAnswer Dunst(std::optional<bool> paused)
{
    return {true, "bus-1", ":1.7", true, "dunst", paused};
}

PopupNote Note(bool inhibited, bool alive)
{
    return {{12, inhibited ? "" : "bus-1", ":1.7", inhibited, false}, alive};
}

TEST(StatusWithoutDisplay, OnlyAProcessOnTheSameDisplayIsASecondInstance)
{
    ApplicationProcesses running;
    for (const auto& [pid, display] :
         {std::pair(12, ":0"), std::pair(13, ":1"), std::pair(14, ":0"), std::pair(15, "")}) {
        running.processes.push_back({pid, 0, false, display, ""});
    }
    EXPECT_EQ(WithoutDisplay(running, "").others, std::vector<pid_t>{14});
    for (ApplicationProcess& process : running.processes) {
        process.display.clear();
    }
    const ApplicationStatus unknown = WithoutDisplay(running, "");
    EXPECT_EQ(unknown.pid, 12);
    EXPECT_THAT(unknown.others, testing::IsEmpty());
}

TEST(StatusPopups, AreHeldBackForWhomeverTheRecordAndTheDaemonAgreeOn)
{
    using State = PopupStatus::State;
    const struct {
        std::optional<PopupNote> note;
        std::optional<bool> paused;
        State state;
    } cases[] = {
        {std::nullopt, false, State::kShown},
        {std::nullopt, true, State::kForeign},
        {std::nullopt, std::nullopt, State::kShown},
        {Note(false, true), true, State::kHeldBack},
        {Note(false, true), false, State::kShown},
        {Note(false, false), true, State::kLeftOver},
        {Note(false, false), false, State::kShown},
        {Note(true, true), std::nullopt, State::kHeldBack},
        {Note(true, false), std::nullopt, State::kShown},
    };
    for (const auto& [note, paused, state] : cases) {
        const PopupStatus popups = PopupsFrom(note, Dunst(paused));
        EXPECT_EQ(NameOf(popups.state), NameOf(state));
        EXPECT_EQ(popups.service, "dunst");
        EXPECT_EQ(popups.pid, state == State::kHeldBack || state == State::kLeftOver ? 12 : 0);
    }
}

TEST(StatusPopups, ARecordOfAnotherBusOrDaemonSaysNothing)
{
    PopupNote note = Note(false, true);
    note.record.bus = "bus-2";
    EXPECT_EQ(PopupsFrom(note, Dunst(true)).state, PopupStatus::State::kForeign);
    note = Note(false, true);
    note.record.daemon = ":1.8";
    EXPECT_EQ(PopupsFrom(note, Dunst(true)).state, PopupStatus::State::kForeign);
    note = Note(true, true);
    note.record.daemon = ":1.8";
    EXPECT_EQ(PopupsFrom(note, Dunst(std::nullopt)).state, PopupStatus::State::kShown);
}

TEST(StatusPopups, WhoDoesNotAnswerIsNamed)
{
    EXPECT_EQ(PopupsFrom({}, std::nullopt).why, "the session bus does not answer");
    EXPECT_EQ(PopupsFrom({}, PopupAnswer()).why, "the session bus does not answer");
    PopupAnswer answer = Dunst(std::nullopt);
    answer.daemonAnswers = false;
    answer.product.clear();
    EXPECT_EQ(PopupsFrom({}, answer).why, "the notification daemon :1.7 does not answer");
    EXPECT_EQ(PopupsFrom({}, answer).state, PopupStatus::State::kUnknown);
    answer.daemon.clear();
    EXPECT_EQ(PopupsFrom({}, answer).why, "no notification daemon runs on the session bus");
    EXPECT_EQ(PopupsFrom({}, answer).state, PopupStatus::State::kShown);
}

TEST(StatusScreen, ShowsEverySectionAndEndsWithTheAnswer)
{
    Report report = GoodReport();
    EXPECT_EQ(Render(report, Judge(report)),
              "Setting      on\n"
              "Application  org.example runs on display ':0' as process 12 and holds 3 keys, the tool keys among them\n"
              "Companion    /bin/gui\n"
              "Popups       held back by dunst for process 12\n"
              "Constants    /c.xml; names 's.xml'\n"
              "Schedule     /rech/s.xml; expiration 2030-12-31\n"
              "Contents     /media/; 2 of 2 contents there\n"
              "Clock        2026-11-21 09:30:00 CET (UTC+01:00)\n"
              "Now          09:00:00 to 18:00:00: day.mp4\n"
              "Next         18:00:00: evening.mp4\n"
              "\n"
              "It will launch and play.\n");
}

TEST(StatusScreen, SaysWhyASectionCannotBeHadAndShowsTheOthers)
{
    Report report = GoodReport();
    report.setting = {false, "", {}, "no settings folder"};
    report.application = {};
    report.launch = {LaunchStatus::State::kNoEntry, "org.example.gui", "", "", "there is none"};
    report.popups = {PopupStatus::State::kUnknown, "", 0, "no session bus"};
    report.zoneVariable = "Europe/Berlin";
    LoseSchedule(report);
    report.content.constants.state = DocumentState::kMissing;
    report.content.constants.problem = "is missing";
    report.content.constants.values.clear();
    report.content.schedule.path = report.content.schedule.directory;
    Verdict verdict;
    verdict.launch = {{"a", Severity::kError, true, "first"}};
    verdict.play = {{"b", Severity::kError, true, "second"}};
    verdict.meaning = {{"c", Severity::kError, false, "third"}};
    verdict.unknown = {{"d", Severity::kNote, false, "fourth"}};
    EXPECT_EQ(Render(report, verdict), "Setting      off; no settings folder\n"
                                       "Application  unknown: DISPLAY is not set\n"
                                       "Companion    there is none\n"
                                       "Popups       unknown: no session bus\n"
                                       "Constants    /c.xml is missing\n"
                                       "Schedule     unknown: nothing names it\n"
                                       "Contents     /media/; unknown without a schedule\n"
                                       "Clock        2026-11-21 09:30:00 CET (UTC+01:00), as TZ=Europe/Berlin says\n"
                                       "Now          unknown without a schedule\n"
                                       "\n"
                                       "What stands in the way:\n"
                                       "- first\n"
                                       "- second\n"
                                       "\n"
                                       "What is not as written:\n"
                                       "- third\n"
                                       "\n"
                                       "Besides:\n"
                                       "- fourth\n"
                                       "\n"
                                       "It will not launch: first.\n");
}

TEST(StatusSentence, NamesTheGravestReason)
{
    const struct {
        std::function<void(Report&)> change;
        std::string sentence;
    } cases[] = {
        {[](Report&) {}, "It will launch and play."},
        {[](Report& report) {
             report.setting.enabled = false;
             LoseContents(report, 1);
         },
         "It will not launch: the setting is off; 'vqmctl setting on' switches it on."},
        {[](Report& report) { LoseContents(report, 1); },
         "It will launch, but not play: 'day.mp4' has 3 bytes; the schedule announces 5."},
        {[](Report& report) {
             report.application = {};
             LoseContents(report, 1);
         },
         "It will not play: 'day.mp4' has 3 bytes; the schedule announces 5."},
        {[](Report& report) { report.application = {}; },
         "It will play; whether the application runs is unknown: DISPLAY is not set."},
        {[](Report& report) { report.root = "/mnt"; },
         "It will play; whether it will launch is not known from its files alone."},
        {[](Report& report) {
             report.content.findings.counts.errors = 1;
             report.content.findings.findings = {{"r", Severity::kError, false, "odd"}};
             report.content.findings.findings.front().effect = "none";
         },
         "It will launch and play, but not what was meant: line 0, column 0: odd; none."},
        {[](Report& report) { report.content.findings.counts.warnings = 2; },
         "It will launch and play, but perhaps not what was meant: the schedule has 2 warnings; see 'vqmctl schedule "
         "lint'."},
    };
    for (const auto& [change, sentence] : cases) {
        Report report = GoodReport();
        change(report);
        EXPECT_EQ(Sentence(report, Judge(report)), sentence);
    }
}

TEST(StatusScreen, CutsWhatIsLongAndEscapesWhatIsOdd)
{
    Report report = GoodReport();
    report.setting.stored = "\x1b[31m" + std::string(100, 'x');
    auto& periods = report.content.schedule.policy.listSchedule;
    periods.clear();
    for (int number = 0; number < 7; ++number) {
        periods.push_back(Period(9, 18, ""));
        for (int file = 0; file < 7; ++file) {
            periods.back().listContents.push_back({"", "f\n" + std::to_string(file), 5, "", file});
        }
    }
    report.application = WithFailed({kMenu, kMore}, {kMore, "XF86AudioPlay", "XF86Menu"});
    const std::string text = Render(report, {});
    EXPECT_THAT(text, HasSubstr("/store holds '\\x1b[31m" + std::string(35, 'x') + "...', expected 0 or 1\n"));
    EXPECT_THAT(text, HasSubstr("Now          09:00:00 to 18:00:00: f\\x0a0, f\\x0a1, f\\x0a2, f\\x0a3, f\\x0a4 and 2 "
                                "more\n             09:00:00"));
    EXPECT_THAT(text, HasSubstr("             2 more periods at the same time\nNext         18:00:00: nothing\n"));
    EXPECT_THAT(text, HasSubstr("taken by other programs, wholly or in part: XF86AudioPlay, XF86Menu\n"));
}

TEST(StatusScreen, ReportsAScheduleThatNeverChanges)
{
    Report report = GoodReport();
    report.content.schedule.policy.listSchedule = {Period(0, 24, "day.mp4")};
    EXPECT_THAT(Render(report, {}), HasSubstr("Now          00:00:00 to 24:00:00: day.mp4\n"
                                              "Next         never: the same plays all day\n"));
    report.content.schedule.policy.listSchedule.clear();
    EXPECT_THAT(Render(report, {}), HasSubstr("Now          nothing: the schedule has no periods\n"
                                              "Next         never: nothing plays at any time\n"));
}

TEST(StatusJson, HoldsWhatTheScreenCutsAndNullForWhatIsNotKnown)
{
    Report report = GoodReport();
    report.setting.stored = "\xff" + std::string(100, 'x');
    const Json json = Json::parse(RenderJson(report, Judge(report)));
    EXPECT_EQ(json["setting"]["stored"], "\\xff" + std::string(100, 'x'));
    EXPECT_EQ(json["setting"]["valid"], false);
    EXPECT_EQ(json["programme"]["plays"][0]["files"][0]["name"], "day.mp4");
    EXPECT_EQ(json["programme"]["plays_next"][0]["files"][0]["name"], "evening.mp4");
    EXPECT_EQ(json["verdict"]["ready"], true);

    LoseSchedule(report);
    report.application = {};
    report.popups = {};
    const Json bare = Json::parse(RenderJson(report, Judge(report)));
    EXPECT_TRUE(bare["programme"].is_null());
    EXPECT_FALSE(bare["contents"].contains("total"));
    EXPECT_FALSE(bare["application"].contains("pid"));
    EXPECT_TRUE(bare["popups"]["service"].is_null());
    EXPECT_EQ(bare["verdict"]["reasons"][0]["id"], "schedule-missing");
    EXPECT_EQ(bare["verdict"]["unknown"][0]["id"], "application-unknown");
}

} // namespace
