#include "Platform/desktop/environment/ToolkitHome.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/desktop/environment/OwnEnvironment.h"

namespace desktop {

namespace {

constexpr char kFolderName[] = "/" PLATFORM_APP_ID ".home";

/// What is found by default through HOME, and the variable that overrides that.
constexpr struct {
    const char* variable;
    const char* placeInHome;
} kFoundThroughHome[] = {
    {"XDG_CONFIG_HOME", "/.config"},
    {"XDG_DATA_HOME", "/.local/share"},
    {"XAUTHORITY", "/.Xauthority"},
};

bool IsSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

void KeepWhatIsFoundThroughHome()
{
    const std::string home = std::getenv("HOME");
    for (const auto& [variable, place] : kFoundThroughHome) {
        if (!IsSet(variable)) {
            SetOwnVariable(variable, (home + place).c_str());
        }
    }
}

} // namespace

bool NamesWritableFolder(const char* variable)
{
    return IsSet(variable) && access(std::getenv(variable), W_OK | X_OK) == 0;
}

void GiveToolkitWritableHome()
{
    if (!IsSet("HOME") || NamesWritableFolder("HOME") || !NamesWritableFolder("XDG_RUNTIME_DIR")) {
        return;
    }
    const std::string folder = std::getenv("XDG_RUNTIME_DIR") + std::string(kFolderName);
    if (mkdir(folder.c_str(), S_IRWXU) == -1 && errno != EEXIST) {
        return;
    }
    KeepWhatIsFoundThroughHome();
    SetOwnVariable("HOME", folder.c_str());
}

} // namespace desktop
