#include "Tools/Terminal/HelpText.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "Tools/Terminal/Terminal.h"

namespace {

constexpr std::size_t kNarrowest = 40;
constexpr std::size_t kWidest = 100;

/// The column at which the rest of a line continues: that of its second column of text, if it has one.
std::size_t TextColumn(const std::string& line)
{
    const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
    const std::size_t gap = first > 0 ? line.find("  ", first) : std::string::npos;
    const std::size_t second = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    // The rest of an option without a description is indented, so that it does not look like another option.
    const std::size_t below = first > 0 ? first + 4 : 0;
    return second == std::string::npos ? below : second;
}

void AppendWrapped(std::string& text, std::string line, std::size_t columns)
{
    const std::size_t indent = TextColumn(line);
    while (line.size() > columns) {
        std::size_t end = line.rfind(' ', columns);
        if (end == std::string::npos || end <= indent) {
            end = line.find(' ', std::max(columns, indent));
        }
        if (end == std::string::npos) {
            break;
        }
        const std::string head = line.substr(0, end);
        text += head.substr(0, head.find_last_not_of(' ') + 1) + "\n";
        line = std::string(indent, ' ') + line.substr(std::min(line.find_first_not_of(' ', end), line.size()));
    }
    text += line + "\n";
}

} // namespace

std::string WrappedHelp(const std::string& help, std::size_t columns)
{
    std::string text;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        AppendWrapped(text, line, columns);
    }
    return text;
}

std::size_t HelpColumns()
{
    return std::clamp(OutputColumns(), kNarrowest, kWidest);
}

std::string ExampleFor(const std::string& command)
{
    static const std::map<std::string, std::string> kExamples = {
        {"vqmctl status", "vqmctl status --quiet"},
        {"vqmctl check", "vqmctl check --watch"},
        {"vqmctl constants get", "vqmctl constants get ScheduleFile"},
        {"vqmctl constants list", "vqmctl constants list --constants /media/stick/constants.xml"},
        {"vqmctl constants init", "vqmctl constants init schedule.xml"},
        {"vqmctl schedule show", "vqmctl schedule show schedule.xml"},
        {"vqmctl schedule at", "vqmctl schedule at 18:15 schedule.xml"},
        {"vqmctl schedule lint", "vqmctl schedule lint --on 2030-01-31 schedule.xml"},
        {"vqmctl schedule timeline", "vqmctl schedule timeline --output day.svg schedule.xml"},
        {"vqmctl schedule group", "vqmctl schedule group left.xml right.xml"},
        {"vqmctl schedule sizes", "vqmctl schedule sizes --media /media/stick schedule.xml"},
        {"vqmctl setting get", "vqmctl setting get"},
        {"vqmctl setting on", "vqmctl setting on"},
        {"vqmctl setting off", "vqmctl setting off"},
        {"vqmctl setting watch", "vqmctl setting watch"},
        {"vqmctl remote keys", "vqmctl remote keys --keyboard"},
        {"vqmctl remote press", "vqmctl remote press --times 3 XF86More"},
        {"vqmctl keys watch", "vqmctl keys watch --json"},
        {"vqmctl explain", "vqmctl explain time-without-seconds"},
        {"vqmctl help", "vqmctl help schedule lint"},
    };
    const auto found = kExamples.find(command);
    return found == kExamples.end() ? "" : found->second;
}
