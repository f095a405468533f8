#include "Tests/VQMKeygrab/ApplicationTest.h"

#include <new>
#include <stdexcept>

using recorder::Lines;
using recorder::Take;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

/// The program's entry, renamed for this test.
int ProductMain(int argc, char** argv);

namespace {

char programName[] = "VQMKeygrab";
char* arguments[] = {programName, nullptr};

int RunProgram()
{
    return ProductMain(1, arguments);
}

const recorder::LogOf kLog{"Quillmere", "main.cpp"};

const Lines kStart = {
    "ecore_time_unix_get",
    "elm_init 1 VQMKeygrab",
    kLog.Debug("elm_main", "VQMKeygrab main Start\n"),
    "ui_app_add_event_handler 1 no callback slot 1 zero null",
    "ui_app_add_event_handler 0 no callback slot 0 zero null",
    "ui_app_add_event_handler 3 no callback slot 3 zero null",
    "ui_app_add_event_handler 2 callback slot 2 zero null",
    "ui_app_add_event_handler 4 no callback slot 4 zero null",
};
const Lines kBlocking = {
    kLog.Debug("elm_main", "block popups start."),
    "tvcontext_init",
    "tvcontext_begin_popup_free",
    kLog.Debug("elm_main", "block popups end"),
};
const Lines kMainLoop = {"ui_app_main 1 VQMKeygrab null"};
const Lines kDeletion = {recorder::LogOf("Quillmere", "VQMKeyGrab.cpp").Debug("~CVQMKeyGrab", "~CVQMKeyGrab")};
const Lines kUnblocking = {
    kLog.Debug("elm_main", "Unblock popups start."),
    "tvcontext_end_popup_free",
    "tvcontext_fini",
    kLog.Debug("elm_main", "Unblock popups end"),
};
const Lines kEnd = {
    kLog.Debug("elm_main", "VQMKeygrab main End\n"),
    "elm_shutdown",
};

} // namespace

class StartUpTest : public ApplicationTest {
protected:
    static Lines WholeRun(const Lines& blocking, const Lines& unblocking)
    {
        return Concatenated(
            {kStart, blocking, WindowCreation(), kMainLoop, kDeletion, WindowDestruction(), unblocking, kEnd});
    }
};

TEST_F(StartUpTest, WholeRunAsOneTrace)
{
    application.mainLoop = [](const auto&) {
        EXPECT_NE(gkeygrab, nullptr);
        return 0;
    };
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_THAT(Take(), ElementsAreArray(WholeRun(kBlocking, kUnblocking)));
    EXPECT_EQ(gkeygrab, nullptr);
    EXPECT_EQ(_elm_startup_time, 1479686400.25);
}

TEST_F(StartUpTest, ResultIsTheMainLoops)
{
    for (const int result : {0, 1, -3, 255, -2147483647}) {
        application.mainLoop = [result](const auto&) { return result; };
        EXPECT_EQ(RunProgram(), result);
        EXPECT_EQ(gkeygrab, nullptr);
        EXPECT_THAT(Take(), ElementsAreArray(WholeRun(kBlocking, kUnblocking)));
    }
}

TEST_F(StartUpTest, FailedToolkitStartChangesNothing)
{
    application.elmInitResult = 0;
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_THAT(Take(), ElementsAreArray(WholeRun(kBlocking, kUnblocking)));
}

TEST_F(StartUpTest, RunsOnWithoutAWindow)
{
    application.noWindow = true;
    application.mainLoop = [](const auto&) { return 5; };
    EXPECT_EQ(RunProgram(), 5);
    const Lines trace = Take();
    EXPECT_THAT(trace, Contains(grab.Debug("CVQMKeyGrab", "failed to create window")));
    EXPECT_THAT(trace, Contains("ui_app_main 1 VQMKeygrab null"));
    EXPECT_THAT(trace, Contains(kDeletion.front()));
}

TEST_F(StartUpTest, MainLoopThatDeletesTheKeyGrabIsNotFollowedByASecondDeletion)
{
    application.mainLoop = [](const auto&) {
        delete gkeygrab;
        gkeygrab = nullptr;
        Take();
        return 0;
    };
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_THAT(Take(), ElementsAreArray(Concatenated({kUnblocking, kEnd})));
}

/// One popup call throws: which lines remain.
struct ThrowingCall {
    const char* name;
    Lines blocking;
    Lines unblocking;
};

void PrintTo(const ThrowingCall& call, std::ostream* out)
{
    *out << call.name;
}

class ThrowingPopupService : public StartUpTest, public testing::WithParamInterface<ThrowingCall> {};

TEST_P(ThrowingPopupService, NeverStopsStartUpOrTeardown)
{
    const std::function<void()> throwers[] = {
        [] { throw 42; },
        [] { throw std::runtime_error("service"); },
        [] { throw "anything else"; },
    };
    for (const auto& thrower : throwers) {
        application.onCall[GetParam().name] = thrower;
        application.mainLoop = [](const auto&) { return 7; };
        EXPECT_EQ(RunProgram(), 7);
        EXPECT_THAT(Take(), ElementsAreArray(WholeRun(GetParam().blocking, GetParam().unblocking)));
    }
}

const std::string kBlockException = kLog.Debug("elm_main", "Exception while block popup's");
const std::string kUnblockException = kLog.Debug("elm_main", "Exception while clearing popup's");

INSTANTIATE_TEST_SUITE_P(
    StartUp, ThrowingPopupService,
    testing::Values(
        ThrowingCall{"tvcontext_init", {kBlocking[0], kBlocking[1], kBlockException}, kUnblocking},
        ThrowingCall{
            "tvcontext_begin_popup_free", {kBlocking[0], kBlocking[1], kBlocking[2], kBlockException}, kUnblocking},
        ThrowingCall{"tvcontext_end_popup_free", kBlocking, {kUnblocking[0], kUnblocking[1], kUnblockException}},
        ThrowingCall{"tvcontext_fini", kBlocking, {kUnblocking[0], kUnblocking[1], kUnblocking[2], kUnblockException}}),
    [](const auto& step) { return std::string(step.param.name); });

TEST_F(StartUpTest, ThrowingConstructorEndsTheProgramUncaught)
{
    application.onCall["elm_win_add"] = [] { throw std::bad_alloc(); };
    EXPECT_THROW(RunProgram(), std::bad_alloc);
    const Lines trace = Take();
    EXPECT_THAT(trace, Not(Contains("ui_app_main 1 VQMKeygrab null")));
    EXPECT_THAT(trace, Not(Contains(kUnblocking.front())));
    EXPECT_EQ(trace.back(), "elm_win_add null VQMKeygrab 1");
    EXPECT_EQ(gkeygrab, nullptr);
}

TEST_F(StartUpTest, LifecycleCallbacksOnlyLogAndTerminationFlushesTheCaches)
{
    application.mainLoop = [](const ui_app_lifecycle_callback_s& callbacks) {
        Take();
        const auto info = [](const char* function, const char* text) {
            return recorder::Log(4, "Quillmere", "main.cpp", function, text);
        };
        EXPECT_TRUE(callbacks.create(nullptr));
        EXPECT_THAT(Take(), IsEmpty());

        callbacks.app_control(nullptr, nullptr);
        EXPECT_THAT(Take(), ElementsAre(info("_app_control", "_app_control() called start"),
                                        info("_app_control", "_app_control() called end")));
        callbacks.resume(nullptr);
        EXPECT_THAT(Take(), ElementsAre(info("_resume", "_resume() called start")));
        callbacks.pause(nullptr);
        EXPECT_THAT(Take(), ElementsAre(info("_pause", "_pause() called start")));
        callbacks.terminate(nullptr);
        EXPECT_THAT(Take(), ElementsAre(info("_terminate", "_terminate() called"), "elm_cache_all_flush"));
        EXPECT_NE(gkeygrab, nullptr);
        return 0;
    };
    EXPECT_EQ(RunProgram(), 0);
}

// The TV's framework reads the callbacks in this order.
static_assert(offsetof(ui_app_lifecycle_callback_s, create) == 0);
static_assert(offsetof(ui_app_lifecycle_callback_s, terminate) == 1 * sizeof(void*));
static_assert(offsetof(ui_app_lifecycle_callback_s, pause) == 2 * sizeof(void*));
static_assert(offsetof(ui_app_lifecycle_callback_s, resume) == 3 * sizeof(void*));
static_assert(offsetof(ui_app_lifecycle_callback_s, app_control) == 4 * sizeof(void*));

class LanguageChange : public ApplicationTest {
protected:
    LanguageChange()
    {
        RunProgram();
        Take();
    }
};

TEST_F(LanguageChange, LanguageIsHandedToTheToolkit)
{
    for (const std::string language : {"de_DE.UTF-8", "", "100%s"}) {
        settings.texts["db/menu_widget/language"] = language;
        application.languageChanged(nullptr, nullptr);
        EXPECT_THAT(Take(), ElementsAre("vconf_get_str db/menu_widget/language", "elm_language_set " + language,
                                        main.Debug("_languageChange", "Set Lanauge: " + language + "\n"),
                                        "bindtextdomain Quillmere /usr/share/locale"));
    }
}

TEST_F(LanguageChange, WithoutALanguageOnlyTheTextDomainIsBound)
{
    application.languageChanged(nullptr, nullptr);
    EXPECT_THAT(Take(), ElementsAre("vconf_get_str db/menu_widget/language",
                                    main.Debug("_languageChange", "Can not Set multi-language mode!! \n"),
                                    "bindtextdomain Quillmere /usr/share/locale"));
}
