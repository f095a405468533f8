#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Diagnostics/Readiness/FileTree.h"

namespace readiness {

/// What keeps a path from leading to anything, as a clause to add to "is missing": a link in it whose target
/// is not there, or the directory that is missing, and what stands there under a similar name. Nothing when
/// the last part alone is missing.
std::string WhyMissing(const std::string& path, const FileTree& tree = FileTree());

/// "; 'Demo_Movie' is there, but upper and lower case count": what stands beside a missing directory under a
/// similar name. Empty for nothing.
std::string LookAlikeOf(const std::string& directory, const FileTree& tree);

/// For each of these names that has one, what is in `directory`, or in a directory in it, and may be meant:
/// "'LOGO.JPG' is there, but upper and lower case count". Looks at no more than a million names.
std::map<std::string, std::string> FindLookAlikes(const std::string& directory, const std::set<std::string>& names);

/// The documents of XML in a directory, by their names.
std::vector<std::string> FindDocuments(const std::string& directory);

/// The same for one name; other documents of XML in the directory count too. Empty for nothing.
std::string FindOtherSchedule(const std::string& directory, const std::string& name);

} // namespace readiness
