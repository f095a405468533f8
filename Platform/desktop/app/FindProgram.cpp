#include "Platform/desktop/app/FindProgram.h"

#include <glib.h>
#include <unistd.h>

#include "Platform/desktop/app/ProgramFolder.h"

namespace desktop {

std::string FindProgram(const std::string& name)
{
    if (name.find('/') == std::string::npos && !ProgramFolder().empty()) {
        std::string beside = ProgramFolder() + "/" + name;
        if (access(beside.c_str(), X_OK) == 0) {
            return beside;
        }
    }
    char* path = g_find_program_in_path(name.c_str());
    std::string found = path != nullptr ? path : "";
    g_free(path);
    return found;
}

} // namespace desktop
