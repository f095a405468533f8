#include "Platform/desktop/environment/EndSignals.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

#include <Ecore.h>
#include <gtest/gtest.h>

#include "Tests/Support/Eventually.h"

namespace {

constexpr int kLeft = 7;

/// A process whose main loop never gets to run, as in a call that an X server never answers.
[[noreturn]] void GetStuckInTheMainLoop(int ready)
{
    desktop::CatchEndSignals([](const char* /*reason*/) { _exit(kLeft); });
    ecore_init();
    desktop::EndMainLoopOnSignal([] {});
    static_cast<void>(write(ready, "r", 1));
    for (;;) {
        pause();
    }
}

TEST(EndSignals, AMainLoopThatIsStuckIsLeftAfterASignal)
{
    int ready[2] = {-1, -1};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        GetStuckInTheMainLoop(ready[1]);
    }
    close(ready[1]);
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    for (int sent = 0; sent < 3; ++sent) {
        ASSERT_EQ(kill(child, SIGTERM), 0);
    }
    int status = 0;
    const bool ended = Eventually([&] { return waitpid(child, &status, WNOHANG) == child; });
    if (!ended) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
    }
    ASSERT_TRUE(ended);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), kLeft);
}

} // namespace
