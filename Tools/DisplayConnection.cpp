#include "Tools/DisplayConnection.h"

#include <cstdlib>
#include <string>

#include "Tools/Failure.h"

DisplayConnection OpenDisplay()
{
    DisplayConnection display(XOpenDisplay(nullptr));
    if (display == nullptr) {
        const char* name = std::getenv("DISPLAY");
        throw Failure(ExitCode::kCouldNotRun, name == nullptr || *name == '\0'
                                                  ? std::string("no display: DISPLAY is not set")
                                                  : "cannot open display '" + std::string(name) + "'");
    }
    return display;
}
