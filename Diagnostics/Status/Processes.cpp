#include "Diagnostics/Status/Processes.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

namespace status {

namespace {

namespace fs = std::filesystem;

/// The executable's name, which the kernel keeps for each process and shows to every user.
constexpr char kProgram[] = "VQMKeygrab";
/// An environment is bounded by the system only; its first part is enough.
constexpr std::streamsize kMostRead = 1 << 20;

std::string Content(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string content(static_cast<std::size_t>(kMostRead), '\0');
    stream.read(content.data(), kMostRead);
    content.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return content;
}

std::string ValueOf(std::string_view environment, std::string_view name)
{
    while (!environment.empty()) {
        const std::string_view entry = environment.substr(0, environment.find('\0'));
        if (entry.size() > name.size() && entry.substr(0, name.size()) == name && entry[name.size()] == '=') {
            return std::string(entry.substr(name.size() + 1));
        }
        environment.remove_prefix(std::min(entry.size() + 1, environment.size()));
    }
    return "";
}

/// The state in "12 (VQMKeygrab) S 1 ...". The name may itself contain a ")", so the last one ends it.
char StateIn(const std::string& stat)
{
    const std::size_t nameEnd = stat.rfind(')');
    return nameEnd != std::string::npos && nameEnd + 2 < stat.size() ? stat[nameEnd + 2] : '\0';
}

pid_t PidIn(const std::string& name)
{
    pid_t pid = 0;
    const char* const end = name.data() + name.size();
    return std::from_chars(name.data(), end, pid).ptr == end ? pid : 0;
}

/// False for anything but a process of the application, and for one that has ended.
bool Read(const fs::path& folder, ApplicationProcess& process)
{
    process.pid = PidIn(folder.filename().string());
    if (process.pid == 0 || Content(folder / "comm") != std::string(kProgram) + "\n") {
        return false;
    }
    const char state = StateIn(Content(folder / "stat"));
    struct stat owner = {};
    if (state == '\0' || state == 'Z' || state == 'X' || stat(folder.c_str(), &owner) != 0) {
        return false;
    }
    process.stopped = state == 'T' || state == 't';
    process.user = owner.st_uid;
    const std::string environment = Content(folder / "environ");
    process.display = ValueOf(environment, "DISPLAY");
    process.authority = ValueOf(environment, "XAUTHORITY");
    return true;
}

} // namespace

ApplicationProcesses FindApplicationProcesses(const std::string& proc)
{
    ApplicationProcesses found;
    std::error_code error;
    // A kernel that hides the processes of other users hides the first process too.
    found.complete = fs::exists(fs::path(proc) / "1" / "comm", error);
    for (fs::directory_iterator entry(proc, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        ApplicationProcess process;
        if (Read(entry->path(), process)) {
            found.processes.push_back(std::move(process));
        }
    }
    std::sort(found.processes.begin(), found.processes.end(),
              [](const ApplicationProcess& left, const ApplicationProcess& right) { return left.pid < right.pid; });
    return found;
}

std::vector<std::string> DisplaysOf(const std::vector<ApplicationProcess>& processes)
{
    std::vector<std::string> displays;
    for (const ApplicationProcess& process : processes) {
        if (!process.display.empty() &&
            std::find(displays.begin(), displays.end(), process.display) == displays.end()) {
            displays.push_back(process.display);
        }
    }
    return displays;
}

} // namespace status
