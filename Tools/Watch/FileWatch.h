#pragma once

#include <functional>
#include <set>
#include <string>

#include <Ecore.h>

/// Notices changes in directories, on Ecore's main loop. Needs a `MainLoop`.
class FileWatch {
public:
    /// `onChange` runs for one change or many. Throws `CommandError` when the system refuses.
    explicit FileWatch(std::function<void()> onChange);
    ~FileWatch();

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Watches a directory, or, while it is missing, the nearest one above it. Says whether that is
    /// new: what happened before it was watched is not noticed. A directory that cannot be watched
    /// is complained of, once.
    bool Add(const std::string& directory);

private:
    static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* handler);
    void Drain();

    std::function<void()> onChange_;
    int descriptor_;
    Ecore_Fd_Handler* handler_ = nullptr;
    std::set<int> watches_;
    std::set<std::string> refused_;
};
