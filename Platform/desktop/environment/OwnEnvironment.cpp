#include "Platform/desktop/environment/OwnEnvironment.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace desktop {

namespace {

struct OwnVariable {
    const char* name;
    char* found; ///< "name=value" as found, or null: it was not set
};

constexpr std::size_t kMaximum = 8;

// Plain data: constructor functions run before objects with constructors are built.
std::array<OwnVariable, kMaximum> ownVariables;
std::size_t ownCount = 0;

/// Variables that the starter of this process meant for it alone: the start-up notification to end, the
/// service manager to talk to.
constexpr const char* kForUsOnly[] = {
    "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN", "NOTIFY_SOCKET", "WATCHDOG_PID",
    "WATCHDOG_USEC",      "LISTEN_FDS",           "LISTEN_PID",    "LISTEN_FDNAMES",
};

/// A loop instead of `strncmp`: each launch compares all entries, and most differ in the first character.
bool Names(const char* entry, const char* name)
{
    while (*name != '\0' && *entry == *name) {
        ++entry;
        ++name;
    }
    return *name == '\0' && *entry == '=';
}

bool IsOwn(const char* entry)
{
    for (std::size_t i = 0; i < ownCount; ++i) {
        if (Names(entry, ownVariables[i].name)) {
            return true;
        }
    }
    return false;
}

bool IsForUsOnly(const char* entry)
{
    for (const char* name : kForUsOnly) {
        if (Names(entry, name)) {
            return true;
        }
    }
    return false;
}

char* FoundEntry(const char* name)
{
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (Names(*entry, name)) {
            // Never freed: it is handed on for as long as the process lives.
            return strdup(*entry);
        }
    }
    return nullptr;
}

} // namespace

void SetOwnVariable(const char* name, const char* value)
{
    bool known = false;
    for (std::size_t i = 0; i < ownCount; ++i) {
        known = known || std::strcmp(ownVariables[i].name, name) == 0;
    }
    if (!known) {
        if (ownCount == kMaximum) {
            return;
        }
        ownVariables[ownCount] = {name, FoundEntry(name)};
        ++ownCount;
    }
    setenv(name, value, 1);
}

std::vector<char*> EnvironmentToHandOn()
{
    std::vector<char*> result;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (!IsOwn(*entry) && !IsForUsOnly(*entry)) {
            result.push_back(*entry);
        }
    }
    for (std::size_t i = 0; i < ownCount; ++i) {
        if (ownVariables[i].found != nullptr) {
            result.push_back(ownVariables[i].found);
        }
    }
    result.push_back(nullptr);
    return result;
}

} // namespace desktop
