#include "Diagnostics/Readiness/MissingFile.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <strings.h>
#include <system_error>
#include <vector>

#include "Diagnostics/Text/LookAlike.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostEntries = 1000000;
constexpr std::size_t kMostShown = 3;

/// Calls `visit` for each entry until there are too many. What cannot be read has none.
void ForEachEntry(const fs::path& directory, std::size_t& left,
                  const std::function<void(const fs::directory_entry& entry)>& visit)
{
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator() && left > 0; entry.increment(error)) {
        --left;
        visit(*entry);
    }
}

/// "a link to 'b', which is a link to 'c', which is not there"
std::string DescribeDanglingLink(fs::path link)
{
    constexpr int kMostLinks = 8; // more would not help a reader, and links may form a ring
    std::string text;
    for (int count = 0; count < kMostLinks; ++count) {
        std::error_code error;
        const fs::path target = fs::read_symlink(link, error);
        if (error) {
            break;
        }
        text += (count == 0 ? "a link to " : ", which is a link to ") + Quoted(target.string());
        link = link.parent_path() / target; // an absolute target replaces the whole path
    }
    return text + ", which is not there";
}

/// Without "/" at its end.
fs::path Stripped(const std::string& path)
{
    const fs::path whole = fs::path(path).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

} // namespace

std::string WhyMissing(const std::string& path, const FileTree& tree)
{
    const fs::path last = Stripped(path);
    fs::path place;
    for (const fs::path& part : last) {
        place /= part;
        std::error_code error;
        if (fs::exists(tree.Locate(place.string()), error) || error) {
            continue;
        }
        // Only the parent is located: the link itself must not be followed.
        const fs::path link = fs::path(tree.Locate(place.parent_path().string())) / part;
        if (fs::is_symlink(fs::symlink_status(link, error))) {
            return (place == last ? ": it is " : ": " + Quoted(place.string()) + " is ") + DescribeDanglingLink(link);
        }
        return place == last
                   ? ""
                   : ": the directory " + Quoted(place.string()) + " is not there" + LookAlikeOf(place.string(), tree);
    }
    return "";
}

std::string LookAlikeOf(const std::string& directory, const FileTree& tree)
{
    const fs::path path = Stripped(directory);
    const auto found = FindLookAlikes(tree.Locate(path.parent_path().string()), {path.filename().string()});
    return found.empty() ? "" : "; " + found.begin()->second;
}

std::map<std::string, std::string> FindLookAlikes(const std::string& directory, const std::set<std::string>& names)
{
    std::map<std::u32string, const std::string*> wanted;
    for (const std::string& name : names) {
        if (name.find('/') == std::string::npos) {
            wanted.emplace(LookAlikeKey(name), &name);
        }
    }
    std::map<std::string, std::string> found;
    if (wanted.empty()) {
        return found;
    }
    std::vector<fs::path> folders;
    std::size_t left = kMostEntries;
    ForEachEntry(directory, left, [&](const fs::directory_entry& entry) {
        const std::string name = entry.path().filename().string();
        std::error_code error;
        if (entry.is_directory(error)) {
            folders.push_back(entry.path());
        }
        for (const std::u32string& key : LookAlikeKeys(name)) {
            const auto match = wanted.find(key);
            // A link to a missing file is found under the wanted name itself.
            if (match != wanted.end() && *match->second != name) {
                found.emplace(*match->second, DescribeLookAlike(*match->second, name));
            }
        }
    });
    std::sort(folders.begin(), folders.end());
    for (const fs::path& folder : folders) {
        ForEachEntry(folder, left, [&](const fs::directory_entry& entry) {
            const std::string name = entry.path().filename().string();
            if (names.count(name) != 0) {
                found.emplace(name, Quoted((folder.filename() / name).string()) + " is there, a directory too deep");
            }
        });
    }
    return found;
}

std::vector<std::string> FindDocuments(const std::string& directory)
{
    std::vector<std::string> names;
    std::size_t left = kMostEntries;
    ForEachEntry(directory, left, [&](const fs::directory_entry& entry) {
        const std::string extension = entry.path().extension().string();
        std::error_code error;
        if (strcasecmp(extension.c_str(), ".xml") == 0 && entry.is_regular_file(error)) {
            names.push_back(entry.path().filename().string());
        }
    });
    std::sort(names.begin(), names.end());
    return names;
}

std::string FindOtherSchedule(const std::string& directory, const std::string& name)
{
    const auto alike = FindLookAlikes(directory, {name});
    if (!alike.empty()) {
        return alike.begin()->second;
    }
    std::vector<std::string> all;
    std::size_t left = kMostEntries;
    ForEachEntry(directory, left, [&](const fs::directory_entry& entry) {
        if (entry.path().filename() != name) {
            all.push_back(entry.path().filename().string());
        }
    });
    const std::vector<std::string> close = Suggest(name, all);
    std::vector<std::string> others = close.empty() ? FindDocuments(directory) : close;
    if (others.empty()) {
        return "";
    }
    const bool more = others.size() > kMostShown;
    others.resize(std::min(others.size(), kMostShown));
    return QuotedList(others) + (others.size() == 1 ? " is there" : " are there") + (more ? ", among others" : "") +
           "; rename the schedule, or name it in the constants";
}

} // namespace readiness
