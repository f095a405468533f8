#include "Diagnostics/Status/DisplayConnection.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

DisplayConnection OpenDisplay()
{
    DisplayConnection display(XOpenDisplay(nullptr));
    if (display == nullptr) {
        const char* name = std::getenv("DISPLAY");
        throw std::runtime_error(name == nullptr || *name == '\0' ? std::string("no display: DISPLAY is not set")
                                                                  : "cannot open display '" + std::string(name) + "'");
    }
    return display;
}
