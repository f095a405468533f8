#include "Diagnostics/Readiness/NewConstants.h"

#include <vector>

#include "Diagnostics/Readiness/FileTree.h"
#include "Diagnostics/Readiness/MissingFile.h"

namespace readiness {

namespace {

/// A text as the value of an attribute.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char byte : text) {
        switch (byte) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += byte;
        }
    }
    return escaped;
}

} // namespace

std::string NewConstants(const std::string& scheduleFile)
{
    return "<Constants>\n  <Data key=\"" + std::string(kScheduleFile) + "\" value=\"" + Escaped(scheduleFile) +
           "\"/>\n</Constants>\n";
}

std::string NameForSchedule(const Places& places)
{
    const FileTree tree(places.root);
    const std::vector<std::string> names = FindDocuments(tree.Locate(FindSchedule(places, Constants()).directory));
    return names.size() == 1 ? names.front() : "schedule.xml";
}

} // namespace readiness
