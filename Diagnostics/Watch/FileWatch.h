#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Platform/common/FileDescriptor.h"

/// Notices changes in directories, and of the directories: each part of their paths is watched too,
/// through links, so that a directory that is missing, replaced or linked elsewhere is found again.
///
/// One thread at a time.
class FileWatch {
public:
    /// Throws `std::runtime_error` when the system refuses.
    FileWatch();

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Can be read when something has happened; open as long as this object lives.
    int Descriptor() const { return events_.Get(); }

    /// Reads what has happened since. Returns whether any of it matters; `Watch` has to be called then.
    bool TakeChanges();

    /// Watches these directories from now on, and no others. Returns whether a place is watched that
    /// was not: what happened there before is not noticed. On a network disk that does not answer, it waits.
    bool Watch(const std::set<std::string>& directories);

    /// What kept directories from being watched: "cannot watch 'DIR': ...". Each is named once.
    std::vector<std::string> TakeRefusals() { return std::exchange(refusals_, {}); }

private:
    /// By watch: the names that matter in its directory; an empty one stands for all.
    using Places = std::map<int, std::set<std::string>>;

    void Follow(const std::string& directory, Places& places);
    bool AddPlace(const std::string& directory, const std::string& name, Places& places);

    platform::FileDescriptor events_;
    Places places_;
    std::set<std::string> refused_;
    std::vector<std::string> refusals_; ///< of those, the ones not taken yet
};
