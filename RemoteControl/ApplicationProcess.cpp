#include "RemoteControl/ApplicationProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <spawn.h>
#include <vector>

#include "Platform/desktop/environment/OwnEnvironment.h"

std::string StartApplication(const std::string& command, const std::string& display)
{
    std::array<std::string, 5> words = {"env", "DISPLAY=" + display, "sh", "-c", command};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    const int error =
        posix_spawnp(&process, "env", nullptr, nullptr, arguments.data(), desktop::EnvironmentToHandOn().data());
    return error == 0 ? "The application was started as process " + std::to_string(process)
                      : std::string("The application cannot be started: ") + std::strerror(error);
}

std::string EndApplication(pid_t process)
{
    if (process == 0) {
        return "The application does not run";
    }
    return kill(process, SIGTERM) == 0 ? "The application was asked to end"
                                       : std::string("The application cannot be ended: ") + std::strerror(errno);
}
