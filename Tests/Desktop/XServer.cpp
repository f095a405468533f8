#include "Tests/Desktop/XServer.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

XServer::XServer(const char* screen)
{
    int pipeEnds[2] = {-1, -1};
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) {
        return;
    }
    const std::string descriptor = std::to_string(pipeEnds[1]);
    pid_ = fork();
    if (pid_ == 0) {
        fcntl(pipeEnds[1], F_SETFD, 0);
        const int silent = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(silent, STDERR_FILENO);
        execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", screen, "-noreset",
               static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeEnds[1]);
    char digit = 0;
    std::string number;
    while (read(pipeEnds[0], &digit, 1) == 1 && digit != '\n') {
        number += digit;
    }
    close(pipeEnds[0]);
    name_ = number.empty() ? "" : ":" + number;
}

XServer::~XServer()
{
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
}
