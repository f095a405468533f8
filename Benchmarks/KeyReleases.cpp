// Presses and releases a key and waits for the program that the release starts.
//
// KeyReleases KEYSYM COUNT PIPE: prints, per release, the nanoseconds from just before the release
// is sent to the time that the started program writes into the pipe. KEYSYM is a name or 0x...

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>

namespace {

/// A peer under an instruction counter takes seconds.
constexpr std::chrono::milliseconds kReleaseTimeout{60'000};
/// Between two events everything that the last one caused has ended.
constexpr timespec kPause = {0, 10'000'000};

long long Nanoseconds(const timespec& time)
{
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

/// Sends one tap; returns the time just before the release.
timespec Tap(Display* display, KeyCode key)
{
    XTestFakeKeyEvent(display, key, True, CurrentTime);
    XSync(display, False);
    nanosleep(&kPause, nullptr);
    timespec released{};
    clock_gettime(CLOCK_MONOTONIC, &released);
    XTestFakeKeyEvent(display, key, False, CurrentTime);
    XFlush(display);
    return released;
}

bool ReadTime(int pipe, timespec& time)
{
    pollfd readable{pipe, POLLIN, 0};
    return poll(&readable, 1, static_cast<int>(kReleaseTimeout.count())) == 1 &&
           read(pipe, &time, sizeof time) == sizeof time;
}

int Fail(const char* problem, const char* what)
{
    std::fprintf(stderr, "KeyReleases: %s: %s\n", problem, what);
    return 3;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: KeyReleases KEYSYM COUNT PIPE\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return Fail("no display", XDisplayName(nullptr));
    }
    char* end = nullptr;
    const KeySym number = std::strtoul(argv[1], &end, 16);
    const KeyCode key = XKeysymToKeycode(display, *end == '\0' ? number : XStringToKeysym(argv[1]));
    if (key == 0) {
        return Fail("no key for", argv[1]);
    }
    // Open for writing too, or the pipe ends with each program that wrote.
    const int pipe = open(argv[3], O_RDWR | O_CLOEXEC);
    if (pipe == -1) {
        return Fail("cannot open", argv[3]);
    }
    for (long count = std::strtol(argv[2], nullptr, 10); count > 0; --count) {
        const timespec released = Tap(display, key);
        timespec launched{};
        if (!ReadTime(pipe, launched)) {
            return Fail("nothing was started by", argv[1]);
        }
        std::printf("%lld\n", Nanoseconds(launched) - Nanoseconds(released));
        nanosleep(&kPause, nullptr);
    }
    XCloseDisplay(display);
    return 0;
}
