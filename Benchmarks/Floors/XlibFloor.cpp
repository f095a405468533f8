// The least a program can do for a key: a bare Xlib loop.
//
// XlibFloor KEYSYM PROGRAM: starts the program at each release of the key.

#include <cstdio>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <X11/Xlib.h>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: XlibFloor KEYSYM PROGRAM\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "XlibFloor: no display\n");
        return 3;
    }
    const KeyCode key = XKeysymToKeycode(display, XStringToKeysym(argv[1]));
    if (key == 0) {
        std::fprintf(stderr, "XlibFloor: no key for %s\n", argv[1]);
        return 3;
    }
    XGrabKey(display, key, AnyModifier, DefaultRootWindow(display), False, GrabModeAsync, GrabModeAsync);

    char* arguments[] = {argv[2], nullptr};
    while (true) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type != KeyRelease) {
            continue;
        }
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        pid_t pid = -1;
        if (posix_spawn(&pid, argv[2], nullptr, nullptr, arguments, environ) != 0) {
            std::fprintf(stderr, "XlibFloor: cannot start %s\n", argv[2]);
        }
    }
}
