#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "Platform/common/FileDescriptor.h"
#include "Tools/Watch/MainLoop.h"

/// Notices changes in directories, and of the directories: each part of their paths is watched too,
/// through links, so that a directory that is missing, replaced or linked elsewhere is found again.
class FileWatch {
public:
    /// `onChange` runs on `loop` for one change or many, and has to call `Watch` then. `loop` outlives
    /// the watch's use. Throws `CommandError` when the system refuses.
    FileWatch(MainLoop& loop, std::function<void()> onChange);

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Watches these directories from now on, and no others. Returns whether a place is watched that
    /// was not: what happened there before is not noticed. Reports a directory that cannot be watched,
    /// once.
    bool Watch(const std::set<std::string>& directories);

private:
    /// By watch: the names that matter in its directory; an empty one stands for all.
    using Places = std::map<int, std::set<std::string>>;

    void Follow(const std::string& directory, Places& places);
    bool AddPlace(const std::string& directory, const std::string& name, Places& places);
    void Drain();

    std::function<void()> onChange_;
    platform::FileDescriptor events_;
    Places places_;
    std::set<std::string> refused_;
};
