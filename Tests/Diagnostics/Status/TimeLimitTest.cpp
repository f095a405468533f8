#include "Diagnostics/Status/TimeLimit.h"

#include <csignal>
#include <stdexcept>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using status::AskWithin;

constexpr auto kLong = 60s;
constexpr auto kShort = 50ms;

std::string WaitForEver()
{
    for (;;) {
        pause();
    }
}

TEST(TimeLimit, AnAnswerOfAnyLengthComesBackWhole)
{
    for (const std::size_t size : {0U, 1U, 4096U, 1000000U}) {
        const std::string text(size, 'x');
        EXPECT_EQ(AskWithin(kLong, [size] { return std::string(size, 'x'); }), text);
    }
}

TEST(TimeLimit, GivesUpAQuestionThatNeverEnds)
{
    EXPECT_EQ(AskWithin(kShort, WaitForEver), std::nullopt);
}

TEST(TimeLimit, AnAlarmThatIsIgnoredAndBlockedStillRings)
{
    std::signal(SIGALRM, SIG_IGN);
    sigset_t alarm;
    sigset_t before;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    sigprocmask(SIG_BLOCK, &alarm, &before);
    EXPECT_EQ(AskWithin(kShort, WaitForEver), std::nullopt);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGALRM, SIG_DFL);
}

/// Whoever starts us may ignore SIGCHLD; how a child ended is then not known.
TEST(TimeLimit, WithSigchldIgnoredAnAnswerCutShortIsStillNone)
{
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(AskWithin(kShort, WaitForEver), std::nullopt);
    EXPECT_EQ(AskWithin(kLong, []() -> std::string { _exit(1); }), std::nullopt);
    EXPECT_EQ(AskWithin(kLong, [] { return std::string("whole"); }), "whole");
    EXPECT_EQ(AskWithin(kLong, [] { return std::string(); }), "");
    std::signal(SIGCHLD, SIG_DFL);
}

TEST(TimeLimit, AQuestionThatFailsHasNoAnswer)
{
    EXPECT_EQ(AskWithin(kLong, []() -> std::string { throw std::runtime_error("no"); }), std::nullopt);
    EXPECT_EQ(AskWithin(kLong, []() -> std::string { _exit(1); }), std::nullopt);
    EXPECT_EQ(AskWithin(kLong,
                        []() -> std::string {
                            raise(SIGKILL);
                            return "dead";
                        }),
              std::nullopt);
}

TEST(TimeLimit, WhatTheQuestionDoesStaysInItsProcess)
{
    int touched = 0;
    EXPECT_EQ(AskWithin(kLong, [&] { return std::to_string(++touched); }), "1");
    EXPECT_EQ(touched, 0);
}

} // namespace
