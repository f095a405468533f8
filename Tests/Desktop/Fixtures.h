#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "Tests/Support/Eventually.h"

/// Real files and real processes for the desktop platform's tests.
namespace fixtures {

/// A private folder, gone with all it holds at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// An environment variable for the time of a test.
class Variable {
public:
    Variable(const char* name, const std::string& value);
    explicit Variable(const char* name); ///< unset
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable();

private:
    void Remember();

    const char* name_;
    bool wasSet_ = false;
    std::string before_;
};

/// Another process that runs one function; killed at the end if it still lives.
class Process {
public:
    explicit Process(const std::function<void()>& work);
    /// A program found through PATH, with its output in /dev/null.
    static Process Program(const std::vector<std::string>& arguments);
    Process(Process&& other) noexcept;
    Process& operator=(Process&&) = delete;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    pid_t Pid() const { return pid_; }
    void Signal(int signal) const;
    /// The wait status.
    int Wait();

private:
    pid_t pid_;
};

std::string ReadFile(const std::string& path); ///< empty when there is none
void WriteFile(const std::string& path, const std::string& content);
bool Exists(const std::string& path);

/// Captures the log.
class CapturedLog {
public:
    CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// Ends the capture.
    std::string Text();
};

using ::Eventually;

} // namespace fixtures
