#include "Platform/desktop/environment/ToolkitHome.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/desktop/environment/ApplicationId.h"
#include "Platform/desktop/environment/OwnEnvironment.h"

namespace desktop {

namespace {

/// The files that programs find through HOME by default, and the variable that overrides each place.
constexpr struct {
    const char* variable;
    const char* placeInHome;
} kFoundThroughHome[] = {
    {"XDG_CONFIG_HOME", "/.config"},
    {"XDG_DATA_HOME", "/.local/share"},
    {"XAUTHORITY", "/.Xauthority"},
};

/// Empty when the variable is not set.
std::string ValueOf(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr ? value : "";
}

void KeepWhatIsFoundThroughHome()
{
    const std::string home = ValueOf("HOME");
    for (const auto& [variable, place] : kFoundThroughHome) {
        if (ValueOf(variable).empty()) {
            SetOwnVariable(variable, (home + place).c_str());
        }
    }
}

} // namespace

bool NamesWritableFolder(const char* variable)
{
    const std::string folder = ValueOf(variable);
    return !folder.empty() && access(folder.c_str(), W_OK | X_OK) == 0;
}

void GiveToolkitWritableHome()
{
    if (ValueOf("HOME").empty() || NamesWritableFolder("HOME") || !NamesWritableFolder("XDG_RUNTIME_DIR")) {
        return;
    }
    const std::string folder = ValueOf("XDG_RUNTIME_DIR") + "/" + kApplicationId + ".home";
    if (mkdir(folder.c_str(), S_IRWXU) == -1 && errno != EEXIST) {
        return; // the toolkit then reports each of its failures, but works
    }
    KeepWhatIsFoundThroughHome();
    SetOwnVariable("HOME", folder.c_str());
}

} // namespace desktop
