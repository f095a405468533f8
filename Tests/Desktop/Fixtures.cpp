#include "Tests/Desktop/Fixtures.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "Platform/desktop/base/LogOutput.h"

namespace fixtures {

TemporaryFolder::TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "desktop-test-XXXXXX").string())
{
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Variable::Variable(const char* name, const std::string& value) : name_(name)
{
    Remember();
    setenv(name, value.c_str(), 1);
}

Variable::Variable(const char* name) : name_(name)
{
    Remember();
    unsetenv(name);
}

void Variable::Remember()
{
    if (const char* before = std::getenv(name_)) {
        wasSet_ = true;
        before_ = before;
    }
}

Variable::~Variable()
{
    if (wasSet_) {
        setenv(name_, before_.c_str(), 1);
    } else {
        unsetenv(name_);
    }
}

Process::Process(const std::function<void()>& work) : pid_(fork())
{
    if (pid_ == 0) {
        work();
        _exit(0);
    }
}

Process Process::Program(const std::vector<std::string>& arguments)
{
    return Process([&arguments] {
        const int null = open("/dev/null", O_RDWR);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        std::vector<char*> pointers;
        pointers.reserve(arguments.size() + 1);
        for (const std::string& argument : arguments) {
            pointers.push_back(const_cast<char*>(argument.c_str()));
        }
        pointers.push_back(nullptr);
        execvp(pointers[0], pointers.data());
        _exit(127);
    });
}

Process::Process(Process&& other) noexcept : pid_(std::exchange(other.pid_, -1)) {}

Process::~Process()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        Wait();
    }
}

void Process::Signal(int signal) const
{
    kill(pid_, signal);
}

int Process::Wait()
{
    int status = -1;
    while (waitpid(pid_, &status, 0) == -1 && errno == EINTR) {
    }
    pid_ = -1;
    return status;
}

std::string ReadFile(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void WriteFile(const std::string& path, const std::string& content)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << content;
}

bool Exists(const std::string& path)
{
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

CapturedLog::CapturedLog()
{
    testing::internal::CaptureStderr();
    desktop::ExamineStandardError();
}

std::string CapturedLog::Text()
{
    std::string text = testing::internal::GetCapturedStderr();
    desktop::ExamineStandardError();
    return text;
}

} // namespace fixtures
