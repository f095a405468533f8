#include "Diagnostics/Watch/WatchedDirectories.h"

#include <filesystem>

namespace {

std::string DirectoryOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path().string();
}

} // namespace

std::set<std::string> WatchedDirectories(const readiness::Report& report)
{
    std::set<std::string> directories = {DirectoryOf(report.constants.path), DirectoryOf(report.schedule.path),
                                         DirectoryOf(report.contents.directory)};
    for (const readiness::ContentFile& file : report.contents.files) {
        if (file.name.find('/') != std::string::npos) {
            directories.insert(DirectoryOf(report.contents.directory + file.name));
        }
    }
    return directories;
}
