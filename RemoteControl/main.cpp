#include <cstdio>
#include <cstdlib>
#include <exception>
#include <getopt.h>
#include <unistd.h>

#include <Efreet.h>
#include <Elementary.h>
#include <X11/Xlib.h>

#include "Platform/desktop/base/StandardDescriptors.h"
#include "Platform/desktop/environment/EndSignals.h"
#include "Platform/desktop/environment/OwnEnvironment.h"
#include "Platform/desktop/environment/ToolkitHome.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "RemoteControl/RemoteWindow.h"

namespace {

constexpr int kUsageError = 2;
constexpr int kCouldNotRun = 3;

constexpr char kUsage[] =
    "Usage: VQMRemote --display NAME [--start COMMAND] [--at X,Y]\n"
    "\n"
    "A remote control on the display that DISPLAY names. Its buttons press keys on the TV's display; each says\n"
    "whether the application holds its key, has handed it back, or neither. Its other buttons switch the\n"
    "sync-demo setting and send a popup by the session bus. Keys of the keyboard press the buttons.\n"
    "\n"
    "  --display NAME   the TV's X display, such as :7\n"
    "  --start COMMAND  add buttons that start the application with this shell command, and end it\n"
    "  --at X,Y         put the window there, in pixels\n"
    "  --help           print this\n";

void Complain(const char* text)
{
    std::fprintf(stderr, "VQMRemote: %s\n", text);
}

[[noreturn]] void LeaveAtOnce(const char* reason)
{
    Complain(reason);
    _exit(kCouldNotRun);
}

/// Xlib lets its caller do no more than end the process.
int OnServerGone(Display* /*display*/)
{
    LeaveAtOnce("an X server is gone");
}

[[noreturn]] void Refuse(const char* text)
{
    Complain(text);
    std::exit(kUsageError);
}

/// Ends the process when there is nothing else to do.
RemoteOptions ReadCommandLine(int argc, char** argv)
{
    const option known[] = {{"display", required_argument, nullptr, 'd'},
                            {"start", required_argument, nullptr, 's'},
                            {"at", required_argument, nullptr, 'a'},
                            {"help", no_argument, nullptr, 'h'},
                            {nullptr, 0, nullptr, 0}};
    RemoteOptions options;
    for (int found = 0; (found = getopt_long(argc, argv, "h", known, nullptr)) != -1;) {
        switch (found) {
        case 'd':
            options.display = optarg;
            break;
        case 's':
            options.start = optarg;
            break;
        case 'a':
            if (std::sscanf(optarg, "%5d,%5d", &options.x, &options.y) != 2 || options.x < 0 || options.y < 0) {
                Refuse("--at expects a place such as 20,40");
            }
            break;
        case 'h':
            std::fputs(kUsage, stdout);
            std::exit(EXIT_SUCCESS);
        default:
            std::exit(kUsageError); // getopt has said why
        }
    }
    if (optind < argc || options.display.empty()) {
        Refuse(optind < argc ? "it takes options only; see --help" : "--display is required; see --help");
    }
    return options;
}

/// It needs no power or locale daemons and no index of the installed applications, and its reads of the
/// setting must not fill the terminal. What it starts does not inherit that.
void KeepQuiet()
{
    desktop::SetOwnVariable("ECORE_NO_SYSTEM_MODULES", "1");
    desktop::SetOwnVariable("DLOG_LEVEL", "error");
    efreet_cache_disable();
    desktop::GiveToolkitWritableHome();
}

int Run(const RemoteOptions& options)
{
    try {
        RemoteWindow window(options);
        XSetIOErrorHandler(OnServerGone); // the toolkit has set its own with the first window
        desktop::EndMainLoopOnSignal(elm_exit);
        elm_run();
        desktop::LimitTeardown();
    } catch (const std::exception& exception) {
        Complain(exception.what());
        return kCouldNotRun;
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    const RemoteOptions options = ReadCommandLine(argc, argv);
    desktop::KeepStandardErrorFromBlocking();
    KeepQuiet();
    // Before the toolkit uses Xlib.
    desktop::AddToolKeySymbols();
    if (Display* const own = XOpenDisplay(nullptr)) {
        XCloseDisplay(own);
    } else {
        Complain("cannot open the display that DISPLAY names");
        return kCouldNotRun;
    }
    desktop::CatchEndSignals(LeaveAtOnce);
    if (elm_init(argc, argv) <= 0) {
        Complain("cannot start the toolkit");
        return kCouldNotRun;
    }
    const int result = Run(options);
    elm_shutdown();
    return result;
}
